#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/texts.h"
#include "program/host_services.h"
#include "program/running_mac.h"

#include <functional>
#include <memory>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// What a build of the program provides to its terminal.
struct TerminalBuild {
    using OpenRunningMac =
        std::function<tl::expected<std::unique_ptr<RunningMac>, Message>(HostServices&, const Texts&, Log&)>;

    std::string feedKey;     ///< the vendor's public key for the update feed; may be empty
    std::string feedAddress; ///< the default feed address; may be empty
    /// Used without a volume. Empty on a machine that is not a Mac, where a volume is required.
    OpenRunningMac openRunningMac = {};
};

/// Runs the program with the words of its command line; returns its exit status.
int runTerminal(int count, char** words, const TerminalBuild& build);

} // namespace tidwen
