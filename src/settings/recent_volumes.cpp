#include "settings/recent_volumes.h"

#include "base/property_list.h"

#include <algorithm>

namespace tidwen {

namespace {

std::optional<std::string> text(const PropertyListDictionary& entry, const char* key) {
    const auto found = entry.find(key);
    const auto* value = found == entry.end() ? nullptr : found->second.asString();
    return value ? std::optional(*value) : std::nullopt;
}

std::vector<RecentVolume> read(const std::optional<PropertyListValue>& stored) {
    std::vector<RecentVolume> volumes;
    const auto* list = stored ? stored->asArray() : nullptr;
    if (!list) return volumes;
    for (const auto& value : *list) {
        const auto* entry = value.asDictionary();
        const auto folder = entry ? text(*entry, "folder") : std::nullopt;
        if (folder && folder->starts_with('/') && volumes.size() < RecentVolumes::most)
            volumes.push_back({*folder, text(*entry, "home")});
    }
    return volumes;
}

} // namespace

std::vector<RecentVolume> RecentVolumes::all() const {
    return read(defaults_.value(defaultsKey));
}

void RecentVolumes::remember(const RecentVolume& volume) {
    (void)defaults_.update(defaultsKey, [volume](const std::optional<PropertyListValue>& stored) {
        auto volumes = read(stored);
        std::erase(volumes, volume);
        volumes.insert(volumes.begin(), volume);
        if (volumes.size() > most) volumes.resize(most);
        PropertyListArray list;
        list.reserve(volumes.size());
        for (const auto& each : volumes) {
            PropertyListDictionary entry{{"folder", each.folder}};
            if (each.home) entry["home"] = *each.home;
            list.emplace_back(std::move(entry));
        }
        return std::optional(PropertyListValue(std::move(list)));
    });
}

} // namespace tidwen
