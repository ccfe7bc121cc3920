#include "base/path.h"
#include "base/text.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/policy/kept_folders.h"
#include "scan/policy/place_components.h"
#include "scan/policy/real_places.h"
#include "scan/policy/search_location.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {
namespace {

using Components = PlaceComponents;

// Homes of others, and folders of such homes; "/Users" has a rule of its own.
constexpr std::string_view placesOfOthers[] = {"/root", "/private/var/root", "/home", "/Network", "/net"};

// More than any Mac has.
constexpr std::size_t mostOtherHomes = 500;

/// The place is a folder that is searched, or contains one.
bool isSearched(const Components& place, const UserEnvironment& user) {
    const auto locations = searchLocations(user);
    return std::ranges::any_of(locations, [&](const SearchLocation& location) {
        return isPlaceWithin(placeComponents(location.url), place);
    });
}

} // namespace

void PathPolicy::keepOtherHomes(RealPlaces& places) {
    const Path users("/Users");
    for (const auto& spelled : places.spellings(users))
        usersFolders_.push_back(placeComponents(spelled));
    for (const auto place : placesOfOthers) {
        otherHomes_.push_back(
            placeComponents(place)); // the user's own home in one of them is recognized separately
        keepOtherHome(Path(std::string(place)), places);
    }
    for (const auto& home : user_.otherHomes)
        keepOtherHome(home, places);

    const auto entries = places.files().list(users);
    if (!entries) return;
    std::size_t homes = 0;
    for (const auto& entry : *entries) {
        const auto key = fileNameKey(entry.name);
        const Path home = users / entry.name;
        if (key == "shared" || holdsTheHome(placeComponents(home))) continue;
        if (entry.kind != FileKind::symbolicLink && entry.kind != FileKind::directory) continue;
        if (homes++ == mostOtherHomes) {
            knowsAllHomes_ = false;
            break;
        }
        if (entry.kind == FileKind::symbolicLink)
            keepOtherHome(home, places);
        else
            keepFoldersOf(home, places);
    }
}

void PathPolicy::keepOtherHome(const Path& home, RealPlaces& places) {
    if (!home.isAbsolute()) return;
    bool isHome = true;
    for (const auto& spelled : places.spellings(home))
        isHome = keepOthers(spelled) && isHome;
    if (isHome) keepFoldersOf(home, places);
}

/// The contents of the home are protected with it: only folders that lead elsewhere need protection of their
/// own.
void PathPolicy::keepFoldersOf(const Path& otherHome, RealPlaces& places) {
    auto other = user_;
    other.home = otherHome;
    other.cacheFolder = other.temporaryFolder = std::nullopt;
    const auto keep = [&](const Path& folder) {
        for (const auto& spelled : places.spellings(folder))
            if (!spelled.isWithin(otherHome)) keepOthers(spelled);
    };
    for (const auto folder : deniedHomeFolders)
        keep(otherHome / folder);
    for (const auto folder : neverTouchInHome)
        keep(otherHome / folder);
    for (const auto& location : userLocations(other))
        keep(location.url);
    for (const auto& folder : {otherHome, otherHome / "Library"})
        keepLinkedFromHome(folder, places);
}

/// Whatever else directly in the folder is a link into the user's own: taken with what holds it, it would be
/// gone from that home.
void PathPolicy::keepLinkedFromHome(const Path& folder, RealPlaces& places) {
    const auto entries = places.files().list(folder);
    if (!entries) return;
    for (const auto& entry : *entries) {
        if (entry.kind != FileKind::symbolicLink) continue;
        if (!places.followsAnotherLink()) {
            knowsAllLinks_ = false;
            return;
        }
        for (const auto& spelled : places.spellings(folder / entry.name))
            if (isInAHome(placeComponents(spelled))) keepOthers(spelled);
    }
}

bool PathPolicy::isInAHome(const Components& place) const {
    return std::ranges::any_of(homes_, [&](const Components& home) { return isPlaceWithin(place, home); });
}

/// A folder does not become another user's because an account or a link names it, if all users share it, it
/// is the user's own, or it contains the user's home.
bool PathPolicy::keepOthers(const Path& place) {
    auto kept = placeComponents(place);
    const auto isHeldBy = [&](const Components& home) { return isPlaceWithin(kept, home); };
    const bool isOwnFolder = deniedExact_.contains(kept) && std::ranges::any_of(homes_, isHeldBy);
    const auto holds = [&](std::string_view shared) { return isPlaceWithin(placeComponents(shared), kept); };
    if (isOwnFolder || holdsTheHome(kept) || std::ranges::any_of(deniedPaths, holds)
        || isSearched(kept, user_))
        return false;
    deny(kept);
    otherHomes_.push_back(std::move(kept));
    return true;
}

bool PathPolicy::mayBeInAnotherHome(const Path& url) const {
    return !knowsAllHomes_ || (!knowsAllLinks_ && isInAHome(placeComponents(url)));
}

bool PathPolicy::isInAnotherHome(const Path& url) const {
    return isInAnotherHome(placeComponents(url));
}

bool PathPolicy::isInAnotherHome(const Components& path) const {
    const auto isOthers = [&](const Components& place) {
        return isPlaceWithin(path, place) && std::ranges::none_of(homes_, [&](const Components& home) {
                   return isPlaceWithin(home, place) && isPlaceWithin(path, home);
               });
    };
    const auto isInUsers = [&](const Components& users) {
        return path.size() > users.size() && path[users.size()] != "shared" && isOthers(users);
    };
    return std::ranges::any_of(usersFolders_, isInUsers) || std::ranges::any_of(otherHomes_, isOthers);
}

} // namespace tidwen
