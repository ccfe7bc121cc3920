#include "program/update_settings.h"

#include "host/host_system.h"
#include "scan/applications/app_target.h"
#include "services/version_number.h"

namespace tidwen {

UpdateSettings updateSettings(const AppPreferences& preferences, const std::string& feedKey,
                              const std::string& feedAddress, std::string_view version) {
    const auto& ownFeed = preferences.updateFeed.get();
    return {.isSwitchedOn = preferences.checksForUpdates.get(),
            .address = ownFeed.empty() ? feedAddress : ownFeed,
            .publicKey = feedKey,
            .application = std::string(tidwenBundleID),
            .running = VersionNumber::parse(version).value_or(VersionNumber{}),
            .system = hostSystem()};
}

} // namespace tidwen
