#pragma once

#include "services/update_check.h"
#include "settings/app_preferences.h"

#include <string>
#include <string_view>

namespace tidwen {

/// What a check for updates goes by: the user's settings, and what was built in where nothing is set.
/// `feedKey`: the maker's public key; `feedAddress`: the feed; either may be empty. `version`: of this
/// program.
UpdateSettings updateSettings(const AppPreferences& preferences, const std::string& feedKey,
                              const std::string& feedAddress, std::string_view version);

} // namespace tidwen
