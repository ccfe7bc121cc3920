#pragma once

#include "base/message.h"
#include "program/mac.h"

#include <chrono>
#include <functional>
#include <memory>
#include <tl/expected.hpp>

namespace tidwen {

class HostServices;

/// The Mac that the program runs on. Files are read and moved by POSIX calls, everything else is asked of the
/// system's own tools; so this is portable, and whoever makes it hands it what only a framework answers.
class RunningMac {
  public:
    /// What only a framework of macOS answers. The ports outlive the result.
    struct FrameworkPorts {
        UserEnvironment user; ///< the logged-in user, with the real id
        Keychain& keychain;
        RunningApplications& applications;
        KnownApplications& knownApplications;
        std::function<bool()> isFinderExtensionEnabled = [] { return false; };
        /// How long a prompt for the administrator's password may take.
        std::chrono::milliseconds promptTimeout = std::chrono::seconds(600);
    };

    /// What is passed by reference outlives the result. The error says in words what cannot be used.
    static tl::expected<std::unique_ptr<RunningMac>, Message> open(FrameworkPorts ports, HostServices& host,
                                                                   const Texts& texts, Log& log);
    ~RunningMac();

    Mac& mac();

  private:
    struct Parts;
    explicit RunningMac(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

} // namespace tidwen
