#include "cli/json/settings.h"

#include "base/json.h"

#include <nlohmann/json.hpp>

namespace tidwen::json {

std::string document(const std::set<std::string>& protectedIDs) {
    return writeJson(nlohmann::json(protectedIDs));
}

std::string document(const std::map<std::string, std::vector<std::string>>& byTag) {
    return writeJson(nlohmann::json(byTag));
}

std::string document(const AppPreferences& preferences) {
    auto object = nlohmann::json::object();
    for (const auto& setting : preferenceDescriptions()) {
        const auto value = *preferences.get(setting.name);
        object[std::string(setting.name)] =
            setting.isSwitch ? nlohmann::json(value == "true") : nlohmann::json(value);
    }
    return writeJson(object);
}

std::string settingDocument(const std::string& name, const std::string& value) {
    return writeJson({{"name", name}, {"value", value}});
}

} // namespace tidwen::json
