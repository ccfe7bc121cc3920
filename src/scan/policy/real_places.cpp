#include "scan/policy/real_places.h"

#include "base/path.h"
#include "platform/file_system.h"

#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t longestPath = 1024; // the longest path that a Mac opens

} // namespace

std::vector<Path> PathPolicy::RealPlaces::spellings(const Path& place) {
    std::vector<Path> both = {place};
    if (!place.isAbsolute() || place.string().size() > longestPath) return both;
    const auto& found = find(place.standardized());
    if (found.place && *found.place != place.standardized()) both.push_back(*found.place);
    return both;
}

const PathPolicy::RealPlaces::Found& PathPolicy::RealPlaces::find(const Path& place) {
    const auto known = found_.find(place);
    return known != found_.end() ? known->second : found_.emplace(place, look(place)).first->second;
}

PathPolicy::RealPlaces::Found PathPolicy::RealPlaces::look(const Path& place) {
    if (place.isRoot()) return {place, true};
    const Found parent = find(place.parent());
    if (!parent.place) return {};
    const Path item = *parent.place / place.lastComponent();
    if (!parent.isThere) return {item, false};
    const auto info = files_.info(item);
    if (!info) return info.error().fault == FileFault::missing ? Found{item, false} : Found{};
    if (info->kind != FileKind::symbolicLink) return {item, true};
    const auto real = files_.resolve(item);
    return real ? Found{*real, true} : Found{};
}

} // namespace tidwen
