#pragma once

#include "base/message.h"
#include "program/host_services.h"
#include "program/running_mac.h"

#include <functional>
#include <memory>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// What one build of the program brings to its terminal.
struct TerminalBuild {
    using OpenRunningMac =
        std::function<tl::expected<std::unique_ptr<RunningMac>, Message>(HostServices&, const Texts&, Log&)>;

    std::string feedKey;     ///< the maker's public key of the update feed; may be empty
    std::string feedAddress; ///< the feed, unless the user sets another; may be empty
    /// Where no volume is named. Empty on a machine that is no Mac: there a volume is needed.
    OpenRunningMac openRunningMac = {};
};

/// The program as a terminal calls it, with the words of its command line; gives its exit status.
int runTerminal(int count, char** words, const TerminalBuild& build);

} // namespace tidwen
