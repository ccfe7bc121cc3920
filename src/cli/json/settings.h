#pragma once

#include "settings/app_preferences.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/// Documents of the user's settings; for their format see json/output.h.
namespace tidwen::json {

std::string document(const std::set<std::string>& protectedIDs);
std::string document(const std::map<std::string, std::vector<std::string>>& byTag);
std::string document(const AppPreferences& preferences);
std::string settingDocument(const std::string& name, const std::string& value);

} // namespace tidwen::json
