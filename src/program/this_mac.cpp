#include "program/this_mac.h"

#include <memory>
#include <tl/expected.hpp>

#ifdef __APPLE__
#include "base/log.h"
#include "base/message.h"
#include "base/texts.h"
#include "host/running_user.h"
#include "macos/finder_extension_state.h"
#include "macos/group_container.h"
#include "macos/launch_services.h"
#include "macos/spotlight_usage.h"
#include "macos/user_keychain.h"
#include "macos/workspace_applications.h"
#include "platform/process_runner.h"
#include "program/host_services.h"
#endif

namespace tidwen {

#ifdef __APPLE__

namespace {

struct Frameworks {
    explicit Frameworks(ProcessRunner& processes) : keychain(processes) {}
    UserKeychain keychain;
    WorkspaceApplications applications;
    LaunchServices knownApplications;
    SpotlightUsage usageRecords;
};

tl::expected<std::unique_ptr<RunningMac>, Message> openThisMac(HostServices& host, const Texts& texts,
                                                               Log& log) {
    auto user = runningUser(processAccount());
    if (!user) return tl::unexpected(std::move(user.error()));
    const auto frameworks = std::make_shared<Frameworks>(host.processes());
    return RunningMac::open({.user = std::move(*user),
                             .keychain = frameworks->keychain,
                             .applications = frameworks->applications,
                             .knownApplications = frameworks->knownApplications,
                             .usageRecords = &frameworks->usageRecords,
                             .isFinderExtensionEnabled = isFinderExtensionEnabled,
                             .groupContainer = groupContainer,
                             .owner = frameworks},
                            host, texts, log);
}

} // namespace

#endif

RunningMac::Open thisMac() {
#ifdef __APPLE__
    return openThisMac;
#else
    return {};
#endif
}

} // namespace tidwen
