#include "scan/policy/path_policy.h"

#include "base/text.h"
#include "scan/policy/search_location.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {
namespace {

using Components = std::vector<std::string>;

// Shared by everything below them: moving one of these takes far more away than any application.
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
constexpr std::string_view placesOfOthers[] = {"/root", "/home", "/Network", "/net"};

// The kernel's other spellings: "/.vol/<device>/<inode>" and the like reach any item without saying where it
// lies, so nothing below can judge them.
constexpr std::string_view aliasFolders[] = {".vol", ".nofollow", ".resolve"};

constexpr std::string_view installerExtensions[] = {"dmg", "pkg", "mpkg"};

// Below these, only what lies inside a user's "C" or "T" folder may go.
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
    // A system call ends the path at a NUL: another item would be touched than the one judged.
    if (path.string().find('\0') != std::string::npos) return false;
    return parts.size() < 2
           || std::find(std::begin(aliasFolders), std::end(aliasFolders), parts[1]) == std::end(aliasFolders);
}

/// Where the item lies, or would lie, once the links of its parents are followed. Nothing when that cannot be
/// told: a parent that is no folder, that may not be read, or a link to nowhere.
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

} // namespace

PathPolicy::PathPolicy(const UserEnvironment& user) : user_(user) {
    for (const auto path : deniedPaths)
        deniedExact_.insert(componentsOf(path));
    for (const auto& rule : neverTouchSystem) {
        neverTouch_.push_back({componentsOf(rule.prefix), {}});
        for (const auto exception : rule.exceptions)
            if (!exception.empty()) neverTouch_.back().exceptions.push_back(componentsOf(exception));
    }
    addHome(user_);
    for (const auto place : placesOfOthers)
        otherHomes_.push_back(componentsOf(place));
    for (const auto& home : user_.otherHomes)
        addOtherHome(home);
}

/// An account that names a folder which everybody shares, or one that holds the user's home, does not make it
/// a home.
void PathPolicy::addOtherHome(const Path& home) {
    auto place = componentsOf(home);
    const auto holds = [&](const Components& inside) { return startsWith(inside, place); };
    if (!home.isAbsolute() || std::ranges::any_of(homes_, holds) || std::ranges::any_of(deniedExact_, holds))
        return;
    otherHomes_.push_back(std::move(place));
}

PathPolicy::PathPolicy(const UserEnvironment& user, const FileSystem& files) : PathPolicy(user) {
    if (auto both = forResolvedHome(files)) *this = std::move(*both);
    homeIsPinned_ = true;
}

void PathPolicy::addHome(const UserEnvironment& user) {
    homes_.push_back(componentsOf(user.home));
    deniedExact_.insert(componentsOf(user.home));
    for (const auto folder : deniedHomeFolders)
        deniedExact_.insert(componentsOf(user.home / folder));
    for (const auto& location : searchLocations(user))
        deniedExact_.insert(componentsOf(location.url));
    for (const auto folder : neverTouchInHome)
        neverTouch_.push_back({componentsOf(user.home / folder), {}});
}

std::optional<PathPolicy::Violation> PathPolicy::check(const Path& url,
                                                       bool allowsInstallerInDownloads) const {
    const auto violation = [&](ViolationKind kind) { return Violation{kind, url.standardized().string()}; };

    const auto path = componentsOf(url);
    // Without a home the user's own folders cannot be told from others.
    if (!saysWhereItLies(url, path) || !user_.home.isAbsolute()) return violation(ViolationKind::traversal);

    if (path.size() < 3) return violation(ViolationKind::tooShallow);
    if (deniedExact_.contains(path)) return violation(ViolationKind::deniedExact);

    const bool isPermittedInstaller = allowsInstallerInDownloads && isInstallerInDownloads(url);
    if (isInAnotherHome(path)) return violation(ViolationKind::neverTouch);
    for (const auto& rule : neverTouch_) {
        if (!startsWith(path, rule.prefix)) continue;
        const bool isException =
            std::any_of(rule.exceptions.begin(), rule.exceptions.end(),
                        [&](const auto& exception) { return startsWith(path, exception); });
        if (isException || (isPermittedInstaller && isHomeFolder(rule.prefix, "downloads"))) continue;
        return violation(ViolationKind::neverTouch);
    }

    static const std::array temporaryPrefixes = {componentsOf(temporaryFolders[0].prefix),
                                                 componentsOf(temporaryFolders[1].prefix)};
    for (std::size_t i = 0; i < temporaryPrefixes.size(); ++i)
        if (startsWith(path, temporaryPrefixes[i]) && path.size() < temporaryFolders[i].components)
            return violation(ViolationKind::tooShallow);
    return std::nullopt;
}

std::optional<PathPolicy::Violation> PathPolicy::checkMove(const Path& source, const Path& destination,
                                                           const FileSystem& files) const {
    for (const Path* end : {&source, &destination})
        if (end->hasTraversal()) return Violation{ViolationKind::traversal, end->string()};

    const bool sourceIsQuarantined = isQuarantineEndpoint(source);
    if (sourceIsQuarantined == isQuarantineEndpoint(destination))
        return Violation{ViolationKind::missingQuarantineEndpoint,
                         (sourceIsQuarantined ? source : destination).string()};
    const Path real = (sourceIsQuarantined ? destination : source).standardized();
    const Path quarantined = (sourceIsQuarantined ? source : destination).standardized();

    if (isBesideTheHome(real, files)) return Violation{ViolationKind::neverTouch, real.string()};
    // A home that is reached through a link has two spellings, and its folders are the user's under both.
    const auto resolvedHome = forResolvedHome(files);
    const PathPolicy& policy = resolvedHome ? *resolvedHome : *this;
    if (auto found = policy.check(real, true)) return found;
    const auto resolvedReal = resolvedPlace(real, files);
    if (!resolvedReal) return Violation{ViolationKind::traversal, real.string()};
    if (*resolvedReal != real)
        if (auto found = policy.check(*resolvedReal, true)) return found;

    const auto resolvedQuarantined = resolvedPlace(quarantined, files);
    const bool staysInQuarantine =
        resolvedQuarantined
        && (*resolvedQuarantined == quarantined || policy.isQuarantineEndpoint(*resolvedQuarantined));
    if (!staysInQuarantine) return Violation{ViolationKind::missingQuarantineEndpoint, quarantined.string()};
    return std::nullopt;
}

std::optional<PathPolicy> PathPolicy::forResolvedHome(const FileSystem& files) const {
    if (homeIsPinned_) return std::nullopt;
    const auto resolved = files.resolve(user_.home);
    if (!resolved || *resolved == user_.home) return std::nullopt;
    PathPolicy both = *this;
    UserEnvironment user = user_;
    user.home = *resolved;
    both.addHome(user);
    return both;
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
    static const Components users = componentsOf("/Users");
    const bool isInUsers = path.size() > users.size() && path[users.size()] != "shared" && isOthers(users);
    return isInUsers || std::ranges::any_of(otherHomes_, isOthers);
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

bool PathPolicy::isHomeFolder(const Components& path, std::string_view folder) const {
    return std::any_of(homes_.begin(), homes_.end(), [&](const Components& home) {
        return path.size() == home.size() + 1 && startsWith(path, home) && path.back() == folder;
    });
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
    if (!isHomeFolder(folder, "downloads")) return false;
    const auto extension = url.standardized().lowercasedExtension();
    return std::find(std::begin(installerExtensions), std::end(installerExtensions), extension)
           != std::end(installerExtensions);
}

} // namespace tidwen
