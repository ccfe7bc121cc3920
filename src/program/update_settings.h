#pragma once

#include "services/update_check.h"
#include "settings/app_preferences.h"

#include <string>
#include <string_view>

namespace tidwen {

/// The parameters of an update check: the user's settings, with built-in defaults. `feedKey`: the vendor's
/// public key; `feedAddress`: the feed; both may be empty. `version`: of this program.
UpdateSettings updateSettings(const AppPreferences& preferences, const std::string& feedKey,
                              const std::string& feedAddress, std::string_view version);

} // namespace tidwen
