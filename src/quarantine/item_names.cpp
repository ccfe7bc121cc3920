#include "quarantine/item_names.h"

#include "base/path_key.h"

#include <algorithm>

namespace tidwen {

namespace {

std::string keyOf(const std::string& name) {
    return pathKey(Path(name)).string();
}

} // namespace

const ItemNames::NamesByKey& ItemNames::namesIn(const Path& folder) {
    const auto [known, isNew] = known_.try_emplace(folder);
    if (isNew)
        for (const auto& entry : files_.list(folder).value_or(std::vector<DirectoryEntry>{}))
            known->second[keyOf(entry.name)].push_back(entry.name);
    return known->second;
}

ItemNames::Found ItemNames::find(const Path& root, const Path& item) {
    if (files_.exists(item)) return {.place = item, .isThere = true};
    const auto components = item.components();
    Path place = root;
    for (auto i = root.components().size(); i < components.size(); ++i) {
        const auto& names = namesIn(place);
        const auto found = names.find(keyOf(components[i]));
        if (found == names.end()) return {.place = item};
        const bool isExact = std::ranges::find(found->second, components[i]) != found->second.end();
        if (!isExact && found->second.size() > 1) return {.place = item, .isAmbiguous = true};
        place = place / (isExact ? components[i] : found->second.front());
    }
    return {.place = place, .isThere = true};
}

} // namespace tidwen
