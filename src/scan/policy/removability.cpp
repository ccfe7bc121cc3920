#include "scan/policy/removability.h"

#include "base/path.h"
#include "base/path_key.h"
#include "base/text.h"
#include "platform/user_environment.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"

namespace tidwen {

namespace {

using Reason = ImmovableApplication::Reason;

/// The real location of the bundle; the path itself when it is unknown.
Path realPlace(const Path& bundle, bool isLink, const FileSystem& files) {
    return (isLink ? files.resolve(bundle) : files.resolveParent(bundle)).value_or(bundle);
}

/// A home may itself be reached through a link; its contents are then where users expect them.
bool isWhereItSays(const Path& bundle, const Path& place, const Path& home, const FileSystem& files) {
    if (pathKey(bundle) == pathKey(place)) return true;
    const auto realHome = files.resolve(home);
    if (!realHome || !pathKey(bundle).isWithin(pathKey(home))) return false;
    const auto below = pathKey(bundle).string().substr(pathKey(home).string().size());
    return Path(pathKey(*realHome).string() + below) == pathKey(place);
}

/// The outermost bundle that contains the place.
std::optional<Path> holdingBundle(const Path& place, const FileSystem& files) {
    std::optional<Path> holder;
    for (Path folder = place.parent(); !folder.isRoot(); folder = folder.parent())
        if (isBundleName(folder.lastComponent()) && isBundle(files, folder)) holder = folder;
    return holder;
}

} // namespace

std::string_view name(ImmovableApplication::Reason reason) {
    switch (reason) {
    case Reason::reachedThroughLink:
        return "reachedThroughLink";
    case Reason::protectedPlace:
        return "protectedPlace";
    case Reason::partOfBundle:
        return "partOfBundle";
    case Reason::noRights:
        return "noRights";
    }
    return {};
}

Message ImmovableApplication::describe(const AppTarget& target) const {
    const auto* key = reason == Reason::reachedThroughLink ? "error.reachedThroughLink %@ %@"
                      : reason == Reason::protectedPlace   ? "error.protectedPlace %@ %@"
                      : reason == Reason::partOfBundle     ? "error.partOfBundle %@ %@"
                                                           : "error.notMovable %@ %@";
    return {key, {printable(target.name), printable(place.string())}};
}

std::optional<ImmovableApplication> whyNotRemovable(const AppTarget& target, const FileSystem& files,
                                                    const PathPolicy& policy, const UserEnvironment& user,
                                                    MoveRights rights) {
    const Path bundle = target.bundleURL.standardized();
    if (bundle.isRoot() || pathKey(bundle).isWithin(pathKey(user.trash()))) return std::nullopt;
    const auto info = files.info(bundle);
    if (!info && info.error().fault == FileFault::missing) return std::nullopt;
    const bool isLink = info && info->kind == FileKind::symbolicLink;
    const Path place = realPlace(bundle, isLink, files);
    if (isLink || !isWhereItSays(bundle, place, user.home, files))
        return ImmovableApplication{Reason::reachedThroughLink, place};
    if (policy.check(place)) return ImmovableApplication{Reason::protectedPlace, place};
    if (auto holder = holdingBundle(place, files))
        return ImmovableApplication{Reason::partOfBundle, std::move(*holder)};
    // An administrator cannot move a locked item either.
    const bool isKept = rights == MoveRights::own ? !files.isMovable(bundle) : info && info->immutable;
    if (isKept) return ImmovableApplication{Reason::noRights, place};
    return std::nullopt;
}

} // namespace tidwen
