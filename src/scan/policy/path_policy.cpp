#include "scan/policy/path_policy.h"

#include "base/path.h"
#include "scan/policy/place_components.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {
namespace {

using Components = PlaceComponents;

// The kernel's aliases: "/.vol/<device>/<inode>" and the like reach any item without its path, so nothing
// below them can be checked.
constexpr std::string_view aliasFolders[] = {".vol", ".nofollow", ".resolve"};

constexpr std::string_view installerExtensions[] = {"dmg", "pkg", "mpkg"};

// Below these, only the contents of a user's "C" or "T" folder may be moved.
struct DepthRule {
    std::string_view prefix;
    std::size_t components;
};
constexpr DepthRule temporaryFolders[] = {{"/var/folders", 7}, {"/private/var/folders", 8}};

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

} // namespace

std::optional<PathPolicy::Violation> PathPolicy::check(const Path& url,
                                                       bool allowsInstallerInDownloads) const {
    const auto violation = [&](ViolationKind kind) { return Violation{kind, url.standardized().string()}; };

    const auto path = placeComponents(url);
    // Without a home the user's own folders cannot be distinguished from others.
    if (!saysWhereItLies(url, path) || !user_.home.isAbsolute()) return violation(ViolationKind::traversal);

    if (path.size() < 3) return violation(ViolationKind::tooShallow);
    if (isInAnotherHome(path)) return violation(ViolationKind::neverTouch);
    if (deniedExact_.contains(path)) return violation(ViolationKind::deniedExact);

    const bool isPermittedInstaller = allowsInstallerInDownloads && isInstallerInDownloads(url);
    for (const auto& rule : neverTouch_) {
        if (!isPlaceWithin(path, rule.prefix)) continue;
        const bool isException =
            std::any_of(rule.exceptions.begin(), rule.exceptions.end(),
                        [&](const auto& exception) { return isPlaceWithin(path, exception); });
        if (isException || (isPermittedInstaller && rule.isDownloads)) continue;
        return violation(ViolationKind::neverTouch);
    }

    static const std::array temporaryPrefixes = {placeComponents(temporaryFolders[0].prefix),
                                                 placeComponents(temporaryFolders[1].prefix)};
    for (std::size_t i = 0; i < temporaryPrefixes.size(); ++i)
        if (isPlaceWithin(path, temporaryPrefixes[i]) && path.size() < temporaryFolders[i].components)
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
    return deniedExact_.contains(placeComponents(url));
}

bool PathPolicy::isBesideTheHome(const Path& path, const FileSystem& files) const {
    const auto home = user_.home.standardized();
    const auto depth = home.components().size();
    if (!home.isAbsolute() || !isPlaceWithin(placeComponents(path), placeComponents(home))) return false;
    Path spelled = path;
    while (spelled.components().size() > depth)
        spelled = spelled.parent();
    if (spelled == home) return false;
    const auto itself = files.infoFollowingLinks(spelled), users = files.infoFollowingLinks(home);
    return !itself || !users || itself->device != users->device || itself->inode != users->inode;
}

bool PathPolicy::isQuarantineEndpoint(const Path& url) const {
    const auto path = placeComponents(url);
    if (!saysWhereItLies(url, path)) return false;
    return std::any_of(homes_.begin(), homes_.end(), [&](const Components& home) {
        const auto trash = home.size();
        return path.size() >= trash + 3 && isPlaceWithin(path, home) && path[trash] == ".trash"
               && url.standardized().components()[trash + 1].starts_with(quarantineFolderPrefix);
    });
}

bool PathPolicy::isInstallerInDownloads(const Path& url) const {
    auto folder = placeComponents(url);
    if (!folder.empty()) folder.pop_back();
    if (std::ranges::find(downloads_, folder) == downloads_.end()) return false;
    const auto extension = url.standardized().lowercasedExtension();
    return std::find(std::begin(installerExtensions), std::end(installerExtensions), extension)
           != std::end(installerExtensions);
}

} // namespace tidwen
