#include "scan/policy/path_policy.h"

#include "base/text.h"
#include "scan/policy/search_location.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace tidwen {
namespace {

using Components = std::vector<std::string>;

// Shared by everything below: moving one of these takes along far more than any application.
constexpr std::string_view deniedPaths[] = {
    "/",
    "/Applications",
    "/Applications/Utilities",
    "/Library",
    "/Users",
    "/Users/Shared",
    "/private",
    "/opt",
    "/usr/local",
    "/usr/local/bin",
    "/usr/local/sbin",
    "/usr/local/lib",
    "/usr/local/share",
    "/usr/local/etc",
    "/usr/local/var",
    "/usr/local/opt",
    "/usr/local/include",
    "/opt/homebrew",
    "/opt/local",
    "/opt/homebrew/bin",
    "/opt/homebrew/lib",
    "/opt/homebrew/Cellar",
    "/opt/homebrew/Caskroom",
    "/opt/homebrew/opt",
    "/opt/homebrew/etc",
    "/opt/homebrew/var",
    "/opt/homebrew/share",
};

constexpr std::string_view deniedHomeFolders[] = {"Library", "Documents", "Desktop",  "Downloads",
                                                  "Movies",  "Music",     "Pictures", "Applications"};

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

constexpr std::string_view neverTouchInHome[] = {
    "Library/Keychains",
    "Library/Mobile Documents",
    "Documents",
    "Desktop",
    "Downloads",
    "Pictures",
    "Movies",
    "Music",
    ".Trash",
};

// Homes of others, and folders of such homes; "/Users" has a rule of its own.
constexpr std::string_view placesOfOthers[] = {"/root", "/private/var/root", "/home", "/Network", "/net"};

// The kernel's aliases: "/.vol/<device>/<inode>" and the like reach any item without its path, so nothing
// below them can be checked.
constexpr std::string_view aliasFolders[] = {".vol", ".nofollow", ".resolve"};

// More than any Mac has.
constexpr std::size_t mostLinkedHomes = 1000, mostOtherHomes = 100;

constexpr std::string_view installerExtensions[] = {"dmg", "pkg", "mpkg"};

// Below these, only the contents of a user's "C" or "T" folder may be moved.
struct DepthRule {
    std::string_view prefix;
    std::size_t components;
};
constexpr DepthRule temporaryFolders[] = {{"/var/folders", 7}, {"/private/var/folders", 8}};

Components componentsOf(const Path& path) {
    Components parts = path.standardized().components();
    for (auto& part : parts)
        part = fileNameKey(part);
    return parts;
}

Components componentsOf(std::string_view path) {
    return componentsOf(Path(std::string(path)));
}

bool startsWith(const Components& path, const Components& prefix) {
    return path.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

bool saysWhereItLies(const Path& path, const Components& parts) {
    if (!path.isAbsolute()) return false;
    // A system call ends the path at a NUL, so another item than the checked one would be moved.
    if (path.string().find('\0') != std::string::npos) return false;
    return parts.size() < 2
           || std::find(std::begin(aliasFolders), std::end(aliasFolders), parts[1]) == std::end(aliasFolders);
}

/// The location of the item, existing or not, with the links of its parents resolved. nullopt when it is
/// unknown: a parent that is not a folder or not readable, or a broken link.
std::optional<Path> resolvedPlace(const Path& place, const FileSystem& files) {
    std::vector<std::string> notThereYet = {place.lastComponent()};
    for (Path folder = place.parent();; folder = folder.parent()) {
        if (auto resolved = files.resolve(folder)) {
            for (auto name = notThereYet.rbegin(); name != notThereYet.rend(); ++name)
                resolved = *resolved / *name;
            return *resolved;
        } else if (resolved.error().fault != FileFault::missing || folder.isRoot()) {
            return std::nullopt;
        }
        const auto itself = files.info(folder);
        if (itself || itself.error().fault != FileFault::missing) return std::nullopt;
        notThereYet.push_back(folder.lastComponent());
    }
}

/// The place is a folder that is searched, or contains one.
bool isSearched(const Components& place, const UserEnvironment& user) {
    const auto locations = searchLocations(user);
    return std::ranges::any_of(locations, [&](const SearchLocation& location) {
        return startsWith(componentsOf(location.url), place);
    });
}

} // namespace

/// Resolves the links of many places, looking at each folder once.
class PathPolicy::RealPlaces {
  public:
    explicit RealPlaces(const FileSystem& files) : files_(files) {}

    const FileSystem& files() const { return files_; }

    /// The place as given and, if links lead elsewhere, its real location, existing or not.
    std::vector<Path> spellings(const Path& place) {
        std::vector<Path> both = {place};
        if (!place.isAbsolute() || place.string().size() > longestPath) return both;
        const auto& found = find(place.standardized());
        if (found.place && *found.place != place.standardized()) both.push_back(*found.place);
        return both;
    }

  private:
    static constexpr std::size_t longestPath = 1024; // the longest path that a Mac opens

    struct Found {
        std::optional<Path> place; ///< nullopt when it is unknown
        bool isThere = false;
    };

    const Found& find(const Path& place) {
        const auto known = found_.find(place);
        return known != found_.end() ? known->second : found_.emplace(place, look(place)).first->second;
    }

    Found look(const Path& place) {
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

    const FileSystem& files_;
    std::map<Path, Found> found_;
};

PathPolicy::PathPolicy(const UserEnvironment& user, const FileSystem& files) : user_(user) {
    RealPlaces places(files);
    const auto homes = places.spellings(user_.home);
    for (const auto& home : homes)
        homes_.push_back(componentsOf(home));
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
                    kept.exceptions.push_back(componentsOf(spelled));
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
        downloads_.push_back(componentsOf(downloads));
    for (const auto folder : neverTouchInHome)
        keepWhole(home / folder, {.isDownloads = folder == "Downloads"}, places);
}

void PathPolicy::keepOtherHomes(RealPlaces& places) {
    const Path users("/Users");
    for (const auto& spelled : places.spellings(users))
        usersFolders_.push_back(componentsOf(spelled));
    for (const auto place : placesOfOthers) {
        otherHomes_.push_back(
            componentsOf(place)); // the user's own home in one of them is recognized separately
        keepOtherHome(Path(std::string(place)), places);
    }
    for (const auto& home : user_.otherHomes)
        keepOtherHome(home, places);

    const auto entries = places.files().list(users);
    if (!entries) return;
    std::size_t links = 0, homes = 0;
    for (const auto& entry : *entries) {
        const auto key = fileNameKey(entry.name);
        const Path home = users / entry.name;
        if (key == "shared" || holdsTheHome(componentsOf(home))) continue;
        if (entry.kind == FileKind::symbolicLink && links++ < mostLinkedHomes) keepOtherHome(home, places);
        if (entry.kind == FileKind::directory && homes++ < mostOtherHomes) keepFoldersOf(home, places);
    }
}

void PathPolicy::keepItself(const Path& place, RealPlaces& places) {
    for (const auto& spelled : places.spellings(place))
        deny(componentsOf(spelled));
}

void PathPolicy::keepWhole(const Path& place, NeverTouchRule rule, RealPlaces& places) {
    for (const auto& spelled : places.spellings(place)) {
        rule.prefix = componentsOf(spelled);
        // A link from one of these places to the home, or above it, does not protect the home's contents.
        if (spelled != place && holdsTheHome(rule.prefix)) continue;
        deny(rule.prefix);
        if (std::ranges::find(neverTouch_, rule) == neverTouch_.end()) neverTouch_.push_back(rule);
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

/// Whatever else of another home is a link into the user's own: taken with what holds it, it would be gone
/// from that home.
void PathPolicy::keepLinkedFromHome(const Path& folder, RealPlaces& places) {
    const auto entries = places.files().list(folder);
    if (!entries) return;
    std::size_t links = 0;
    for (const auto& entry : *entries) {
        if (entry.kind != FileKind::symbolicLink || links++ == mostLinkedHomes) continue;
        for (const auto& spelled : places.spellings(folder / entry.name))
            if (isInAHome(componentsOf(spelled))) keepOthers(spelled);
    }
}

bool PathPolicy::isInAHome(const Components& place) const {
    return std::ranges::any_of(homes_, [&](const Components& home) { return startsWith(place, home); });
}

/// A folder does not become another user's because an account or a link names it, if all users share it, it
/// is the user's own, or it contains the user's home.
bool PathPolicy::keepOthers(const Path& place) {
    auto kept = componentsOf(place);
    const auto isHeldBy = [&](const Components& home) { return startsWith(kept, home); };
    const bool isOwnFolder = deniedExact_.contains(kept) && std::ranges::any_of(homes_, isHeldBy);
    const auto holds = [&](std::string_view shared) { return startsWith(componentsOf(shared), kept); };
    if (isOwnFolder || holdsTheHome(kept) || std::ranges::any_of(deniedPaths, holds)
        || isSearched(kept, user_))
        return false;
    deny(kept);
    otherHomes_.push_back(std::move(kept));
    return true;
}

void PathPolicy::deny(Components place) {
    while (!place.empty() && deniedExact_.insert(place).second)
        place.pop_back();
}

bool PathPolicy::holdsTheHome(const Components& place) const {
    return std::ranges::any_of(homes_, [&](const Components& home) { return startsWith(home, place); });
}

std::optional<PathPolicy::Violation> PathPolicy::check(const Path& url,
                                                       bool allowsInstallerInDownloads) const {
    const auto violation = [&](ViolationKind kind) { return Violation{kind, url.standardized().string()}; };

    const auto path = componentsOf(url);
    // Without a home the user's own folders cannot be distinguished from others.
    if (!saysWhereItLies(url, path) || !user_.home.isAbsolute()) return violation(ViolationKind::traversal);

    if (path.size() < 3) return violation(ViolationKind::tooShallow);
    if (isInAnotherHome(path)) return violation(ViolationKind::neverTouch);
    if (deniedExact_.contains(path)) return violation(ViolationKind::deniedExact);

    const bool isPermittedInstaller = allowsInstallerInDownloads && isInstallerInDownloads(url);
    for (const auto& rule : neverTouch_) {
        if (!startsWith(path, rule.prefix)) continue;
        const bool isException =
            std::any_of(rule.exceptions.begin(), rule.exceptions.end(),
                        [&](const auto& exception) { return startsWith(path, exception); });
        if (isException || (isPermittedInstaller && rule.isDownloads)) continue;
        return violation(ViolationKind::neverTouch);
    }

    static const std::array temporaryPrefixes = {componentsOf(temporaryFolders[0].prefix),
                                                 componentsOf(temporaryFolders[1].prefix)};
    for (std::size_t i = 0; i < temporaryPrefixes.size(); ++i)
        if (startsWith(path, temporaryPrefixes[i]) && path.size() < temporaryFolders[i].components)
            return violation(ViolationKind::tooShallow);
    return std::nullopt;
}

tl::expected<JudgedMove, PathPolicy::Violation>
PathPolicy::checkMove(const Path& source, const Path& destination, const FileSystem& files) const {
    const auto refused = [](ViolationKind kind, const Path& path) {
        return tl::unexpected(Violation{kind, path.string()});
    };
    for (const Path* end : {&source, &destination})
        if (end->hasTraversal()) return refused(ViolationKind::traversal, *end);

    const bool leavesQuarantine = isQuarantineEndpoint(source);
    if (leavesQuarantine == isQuarantineEndpoint(destination))
        return refused(ViolationKind::missingQuarantineEndpoint, leavesQuarantine ? source : destination);
    const Path real = (leavesQuarantine ? destination : source).standardized();
    const Path quarantined = (leavesQuarantine ? source : destination).standardized();

    if (isBesideTheHome(real, files)) return refused(ViolationKind::neverTouch, real);
    if (const auto found = check(real, true)) return tl::unexpected(*found);
    const auto resolvedReal = resolvedPlace(real, files);
    if (!resolvedReal) return refused(ViolationKind::traversal, real);
    if (*resolvedReal != real)
        if (const auto found = check(*resolvedReal, true)) return tl::unexpected(*found);

    const auto resolvedQuarantined = resolvedPlace(quarantined, files);
    const bool staysInQuarantine =
        resolvedQuarantined
        && (*resolvedQuarantined == quarantined || isQuarantineEndpoint(*resolvedQuarantined));
    if (!staysInQuarantine) return refused(ViolationKind::missingQuarantineEndpoint, quarantined);
    return leavesQuarantine ? JudgedMove(*resolvedQuarantined, *resolvedReal)
                            : JudgedMove(*resolvedReal, *resolvedQuarantined);
}

bool PathPolicy::holdsProtectedPlace(const Path& url) const {
    return deniedExact_.contains(componentsOf(url));
}

bool PathPolicy::isInAnotherHome(const Path& url) const {
    return isInAnotherHome(componentsOf(url));
}

bool PathPolicy::isInAnotherHome(const Components& path) const {
    const auto isOthers = [&](const Components& place) {
        return startsWith(path, place) && std::ranges::none_of(homes_, [&](const Components& home) {
                   return startsWith(home, place) && startsWith(path, home);
               });
    };
    const auto isInUsers = [&](const Components& users) {
        return path.size() > users.size() && path[users.size()] != "shared" && isOthers(users);
    };
    return std::ranges::any_of(usersFolders_, isInUsers) || std::ranges::any_of(otherHomes_, isOthers);
}

bool PathPolicy::isBesideTheHome(const Path& path, const FileSystem& files) const {
    const auto home = user_.home.standardized();
    const auto depth = home.components().size();
    if (!home.isAbsolute() || !startsWith(componentsOf(path), componentsOf(home))) return false;
    Path spelled = path;
    while (spelled.components().size() > depth)
        spelled = spelled.parent();
    if (spelled == home) return false;
    const auto itself = files.infoFollowingLinks(spelled), users = files.infoFollowingLinks(home);
    return !itself || !users || itself->device != users->device || itself->inode != users->inode;
}

bool PathPolicy::isQuarantineEndpoint(const Path& url) const {
    const auto path = componentsOf(url);
    if (!saysWhereItLies(url, path)) return false;
    return std::any_of(homes_.begin(), homes_.end(), [&](const Components& home) {
        const auto trash = home.size();
        return path.size() >= trash + 3 && startsWith(path, home) && path[trash] == ".trash"
               && url.standardized().components()[trash + 1].starts_with(quarantineFolderPrefix);
    });
}

bool PathPolicy::isInstallerInDownloads(const Path& url) const {
    auto folder = componentsOf(url);
    if (!folder.empty()) folder.pop_back();
    if (std::ranges::find(downloads_, folder) == downloads_.end()) return false;
    const auto extension = url.standardized().lowercasedExtension();
    return std::find(std::begin(installerExtensions), std::end(installerExtensions), extension)
           != std::end(installerExtensions);
}

} // namespace tidwen
