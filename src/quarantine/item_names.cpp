#include "quarantine/item_names.h"

#include "base/path.h"
#include "base/path_key.h"
#include "posix/copied_move.h"

#include <vector>

namespace tidwen {

namespace {

std::string keyOf(const std::string& name) {
    return pathKey(Path(name)).string();
}

} // namespace

const ItemNames::Names& ItemNames::namesIn(const Path& folder) {
    const auto [known, isNew] = known_.try_emplace(folder);
    if (!isNew) return known->second;
    for (const auto& entry : files_.list(folder).value_or(std::vector<DirectoryEntry>{})) {
        known->second.items[keyOf(entry.name)].insert(entry.name);
        if (const auto name = nameOnItsWay(entry.name)) known->second.onTheirWay[keyOf(*name)].insert(*name);
    }
    return known->second;
}

ItemNames::Found ItemNames::find(const Path& root, const Path& item) {
    if (files_.exists(item)) return {.place = item, .isThere = true};
    const auto components = item.components();
    Path place = root;
    for (auto i = root.components().size(); i < components.size(); ++i) {
        const auto& names = namesIn(place);
        const auto key = keyOf(components[i]);
        const auto found = names.items.find(key);
        if (found == names.items.end()) {
            const auto onItsWay = names.onTheirWay.find(key);
            const bool isKnown = onItsWay != names.onTheirWay.end() && onItsWay->second.size() == 1;
            return {.place =
                        isKnown && i + 1 == components.size() ? place / *onItsWay->second.begin() : item};
        }
        const bool isExact = found->second.contains(components[i]);
        if (!isExact && found->second.size() > 1) return {.place = item, .isAmbiguous = true};
        place = place / (isExact ? components[i] : *found->second.begin());
    }
    return {.place = place, .isThere = true};
}

} // namespace tidwen
