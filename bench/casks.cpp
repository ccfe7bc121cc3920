#include "casks.h"
#include "base/path.h"

#include "base/json.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

namespace tidwen::bench {

namespace {

std::vector<std::string> strings(const nlohmann::json& object, const char* key) {
    std::vector<std::string> values;
    if (const auto found = object.find(key); found != object.end())
        for (const auto& value : *found)
            if (value.is_string()) values.push_back(value);
    return values;
}

std::optional<Cask> readCask(const std::string& line) {
    const auto object = parseJson(line);
    if (!object || !object->is_object()) return std::nullopt;
    const auto apps = strings(*object, "apps");
    const auto names = strings(*object, "names");
    Cask cask;
    cask.token = object->value("token", "");
    cask.family = cask.token.substr(0, cask.token.find('@'));
    cask.bundleFile = apps.empty() ? cask.token + ".app" : apps.front();
    cask.bundleID = object->value("primary_id", "");
    cask.name = apps.empty() && !names.empty() ? names.front() : Path("/" + cask.bundleFile).stem();
    cask.packages = strings(*object, "pkgutil");
    for (const auto& entry : object->value("bundle_ids", nlohmann::json::array()))
        if (auto identifier = entry.value("id", ""); identifier != cask.bundleID)
            cask.helpers.push_back(std::move(identifier));
    for (const auto* key : {"zap_trash", "zap_delete"})
        for (auto& text : strings(*object, key)) {
            if (text.starts_with("~/")) text.replace(0, 1, "/Users/alice");
            if (text.starts_with('/')) cask.leftovers.push_back(Path(text).standardized());
        }
    return cask.bundleID.empty() ? std::nullopt : std::optional(std::move(cask));
}

} // namespace

std::vector<Cask> readCasks(const char* file) {
    std::ifstream data(file);
    std::vector<Cask> casks;
    for (std::string line; std::getline(data, line);)
        if (auto cask = readCask(line)) casks.push_back(std::move(*cask));
    return casks;
}

} // namespace tidwen::bench
