#include "volume/volume_user.h"

#include "base/text.h"

namespace tidwen {

namespace {

bool isUserName(const std::string& name) {
    const auto lowered = lowercased(name);
    return !name.starts_with('.') && lowered != "shared" && lowered != "guest" && isValidUtf8(name);
}

/// Sorted, as `list` is. A linked home is left to who names it: two names of one home are no two users.
std::vector<Path> homes(const FileSystem& files) {
    const Path users("/Users");
    std::vector<Path> found;
    const auto entries = files.list(users);
    if (!entries) return found;
    for (const auto& [name, kind] : *entries)
        if (kind == FileKind::directory && isUserName(name)
            && files.isDirectoryFollowingLinks(users / name / "Library"))
            found.push_back(users / name);
    return found;
}

std::vector<Path> foldersIn(const FileSystem& files, const Path& folder) {
    std::vector<Path> found;
    const auto entries = files.list(folder);
    if (!entries) return found;
    for (const auto& [name, kind] : *entries)
        if (kind == FileKind::directory) found.push_back(folder / name);
    return found;
}

/// Fills in "/private/var/folders/XX/YYYY/{C,T}" when exactly one YYYY belongs to the user: where one account
/// owns everything (a copied disk, say) a guess could take another user's files.
void findTemporaryFolders(const FileSystem& files, UserEnvironment& user) {
    std::vector<Path> owned;
    for (const auto& group : foldersIn(files, Path("/private/var/folders")))
        for (const auto& folder : foldersIn(files, group)) {
            const auto info = files.info(folder);
            const bool hasPair = files.isDirectoryFollowingLinks(folder / "C")
                                 || files.isDirectoryFollowingLinks(folder / "T");
            if (info && info->ownerID == user.userID && hasPair) owned.push_back(folder);
        }
    if (owned.size() != 1) return;
    const auto& folder = owned.front();
    if (files.isDirectoryFollowingLinks(folder / "C")) user.cacheFolder = folder / "C";
    if (files.isDirectoryFollowingLinks(folder / "T")) user.temporaryFolder = folder / "T";
}

} // namespace

tl::expected<UserEnvironment, VolumeUserError> findVolumeUser(const FileSystem& files,
                                                              const std::optional<Path>& home) {
    using Kind = VolumeUserError::Kind;
    auto candidates = home ? std::vector<Path>{home->standardized()} : homes(files);
    if (candidates.empty()) return tl::unexpected(VolumeUserError{Kind::noHome, {}, {}});
    if (candidates.size() > 1)
        return tl::unexpected(VolumeUserError{Kind::severalHomes, std::move(candidates), {}});

    const auto& chosen = candidates.front();
    const auto info = files.infoFollowingLinks(chosen);
    if (!chosen.isAbsolute() || !info || info->kind != FileKind::directory)
        return tl::unexpected(VolumeUserError{Kind::notAFolder, {}, chosen});
    UserEnvironment user{.home = chosen, .userID = info->ownerID, .cacheFolder = {}, .temporaryFolder = {}};
    findTemporaryFolders(files, user);
    return user;
}

} // namespace tidwen
