#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/policy/kept_folders.h"
#include "scan/policy/place_components.h"
#include "scan/policy/real_places.h"
#include "scan/policy/search_location.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tidwen {
namespace {

struct SystemRule {
    std::string_view prefix;
    std::array<std::string_view, 2> exceptions = {};
};

constexpr SystemRule neverTouchSystem[] = {
    {"/System"},
    {"/bin"},
    {"/sbin"},
    {"/dev"},
    {"/etc"},
    {"/private/etc"},
    {"/cores"},
    {"/Volumes"},
    {"/usr", {"/usr/local"}},
    {"/var", {"/var/db/receipts", "/var/folders"}},
    {"/private/var", {"/private/var/db/receipts", "/private/var/folders"}},
    {"/Library/Apple"},
    {"/Library/Managed Preferences"},
    {"/Library/SystemExtensions"},
    {"/Library/Keychains"},
    {"/Library/Security"},
};

} // namespace

PathPolicy::PathPolicy(const UserEnvironment& user, const FileSystem& files) : user_(user) {
    RealPlaces places(files);
    const auto homes = places.spellings(user_.home);
    for (const auto& home : homes)
        homes_.push_back(placeComponents(home));
    keepSharedPlaces(places);
    for (const auto& home : homes)
        keepHomeFolders(home, places);
    keepOtherHomes(places);
}

void PathPolicy::keepSharedPlaces(RealPlaces& places) {
    for (const auto path : deniedPaths)
        keepItself(Path(std::string(path)), places);
    for (const auto& rule : neverTouchSystem) {
        NeverTouchRule kept;
        for (const auto exception : rule.exceptions)
            if (!exception.empty())
                for (const auto& spelled : places.spellings(Path(std::string(exception))))
                    kept.exceptions.push_back(placeComponents(spelled));
        keepWhole(Path(std::string(rule.prefix)), std::move(kept), places);
    }
}

void PathPolicy::keepHomeFolders(const Path& home, RealPlaces& places) {
    auto user = user_;
    user.home = home;
    keepItself(home, places);
    for (const auto folder : deniedHomeFolders)
        keepItself(home / folder, places);
    for (const auto& location : searchLocations(user))
        keepItself(location.url, places);
    for (const auto& downloads : places.spellings(home / "Downloads"))
        downloads_.push_back(placeComponents(downloads));
    for (const auto folder : neverTouchInHome)
        keepWhole(home / folder, {.isDownloads = folder == "Downloads"}, places);
}

void PathPolicy::keepItself(const Path& place, RealPlaces& places) {
    for (const auto& spelled : places.spellings(place))
        deny(placeComponents(spelled));
}

void PathPolicy::keepWhole(const Path& place, NeverTouchRule rule, RealPlaces& places) {
    for (const auto& spelled : places.spellings(place)) {
        rule.prefix = placeComponents(spelled);
        // A link from one of these places to the home, or above it, does not protect the home's contents.
        if (spelled != place && holdsTheHome(rule.prefix)) continue;
        deny(rule.prefix);
        if (std::ranges::find(neverTouch_, rule) == neverTouch_.end()) neverTouch_.push_back(rule);
    }
}

void PathPolicy::deny(Components place) {
    while (!place.empty() && deniedExact_.insert(place).second)
        place.pop_back();
}

bool PathPolicy::holdsTheHome(const Components& place) const {
    return std::ranges::any_of(homes_, [&](const Components& home) { return isPlaceWithin(home, place); });
}

} // namespace tidwen
