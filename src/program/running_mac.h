#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/applications.h"
#include "platform/keychain.h"
#include "platform/known_applications.h"
#include "platform/usage_records.h"
#include "platform/user_environment.h"
#include "program/mac.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

class HostServices;

/// The Mac that the program runs on. Uses POSIX calls for files and the system's own tools for everything
/// else, so it is portable; the creator passes in what needs a framework.
class RunningMac : public OwnedMac {
  public:
    /// What only a framework of macOS answers. The ports outlive the result, or live as long as `owner`.
    struct FrameworkPorts {
        UserEnvironment user; ///< the logged-in user, with the real id
        Keychain& keychain;
        RunningApplications& applications;
        KnownApplications& knownApplications;
        const UsageRecords* usageRecords = nullptr;
        std::function<bool()> isFinderExtensionEnabled = [] { return false; };
        /// Where the system puts the folder of an application group; nullopt when it does not say.
        std::function<std::optional<Path>(const std::string& group)> groupContainer = {};
        /// How long a prompt for the administrator's password may take.
        std::chrono::milliseconds promptTimeout = std::chrono::seconds(600);
        std::shared_ptr<void> owner = {}; ///< of the ports; kept by the result
    };

    /// Opens the Mac that the program runs on; empty where that is no Mac.
    using Open =
        std::function<tl::expected<std::unique_ptr<RunningMac>, Message>(HostServices&, const Texts&, Log&)>;

    /// What is passed by reference must outlive the result. The error says what is unusable.
    static tl::expected<std::unique_ptr<RunningMac>, Message> open(FrameworkPorts ports, HostServices& host,
                                                                   const Texts& texts, Log& log);
    ~RunningMac() override;

    Mac& mac() override;

  private:
    struct Parts;
    explicit RunningMac(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

} // namespace tidwen
