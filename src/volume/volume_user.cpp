#include "volume/volume_user.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/property_list_file.h"

#include <algorithm>
#include <charconv>

namespace tidwen {

namespace {

bool isUserName(const std::string& name) {
    const auto lowered = lowercased(name);
    return !name.starts_with('.') && lowered != "shared" && lowered != "guest" && isValidUtf8(name);
}

/// Sorted like `list`. Links are excluded, because two names of one home are not two users; the caller may
/// name one.
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

bool isLink(const FileSystem& files, const Path& path) {
    const auto itself = files.info(path);
    return itself && itself->kind == FileKind::symbolicLink;
}

VolumeUserError whyNoHome(const FileSystem& files) {
    using Kind = VolumeUserError::Kind;
    const Path users("/Users");
    if (!files.exists(users)) return {Kind::noMac, {}, {}};
    const auto entries = files.list(users).value_or(std::vector<DirectoryEntry>());
    const auto link = std::find_if(entries.begin(), entries.end(), [](const DirectoryEntry& entry) {
        return entry.kind == FileKind::symbolicLink && isUserName(entry.name);
    });
    return link == entries.end() ? VolumeUserError{Kind::noHome, {}, {}}
                                 : VolumeUserError{Kind::linked, {}, users / link->name};
}

std::vector<Path> foldersIn(const FileSystem& files, const Path& folder) {
    std::vector<Path> found;
    const auto entries = files.list(folder);
    if (!entries) return found;
    for (const auto& [name, kind] : *entries)
        if (kind == FileKind::directory) found.push_back(folder / name);
    return found;
}

/// Sets "/private/var/folders/XX/YYYY/{C,T}" when exactly one YYYY belongs to the user: where one account
/// owns everything (on a copied disk, for example) a guess could take another user's files.
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

/// System folders: never a person's home, whatever an account's record says.
bool isSystemPlace(const Path& folder) {
    static const char* const places[] = {"/system", "/library", "/applications", "/usr",         "/bin",
                                         "/sbin",   "/private", "/var",          "/etc",         "/tmp",
                                         "/dev",    "/cores",   "/opt",          "/users/shared"};
    const Path lowered(lowercased(folder.string()));
    return folder.components().size() < 3
           || std::any_of(std::begin(places), std::end(places),
                          [&](const char* place) { return lowered.isWithin(Path(place)); });
}

/// One account in the volume's own directory.
struct Account {
    bool isPersons = false; ///< otherwise a service's
    std::vector<Path> homes;
};

std::optional<Account> readAccount(const FileSystem& files, const Path& record) {
    constexpr int firstPerson = 500; // lower IDs are service accounts
    const auto list = readPropertyList(files, record);
    if (!list) return std::nullopt;
    const auto values = [&](const char* key) {
        const auto* value = list->find(key);
        return (value ? value->asStrings() : std::nullopt).value_or(std::vector<std::string>{});
    };
    Account account;
    const auto numbers = values("uid");
    int number = 0;
    if (numbers.size() == 1)
        std::from_chars(numbers[0].data(), numbers[0].data() + numbers[0].size(), number);
    account.isPersons = number > firstPerson;
    for (const auto& home : values("home"))
        account.homes.push_back(Path(home).standardized());
    return account;
}

/// Empty when the directory is not readable: on a Mac's own disk only root may read it.
std::vector<Account> readAccounts(const FileSystem& files) {
    constexpr std::size_t mostAccounts = 1000;
    const Path folder("/private/var/db/dslocal/nodes/Default/users");
    std::vector<Account> accounts;
    const auto entries = files.list(folder);
    if (!entries || entries->size() > mostAccounts) return accounts;
    for (const auto& [name, kind] : *entries) {
        const auto record = folder / name;
        if (kind != FileKind::regular || record.lowercasedExtension() != "plist") continue;
        if (auto account = readAccount(files, record)) accounts.push_back(std::move(*account));
    }
    return accounts;
}

bool isNamedByAccount(const std::vector<Account>& accounts, const Path& home) {
    return !isSystemPlace(home) && std::ranges::any_of(accounts, [&](const Account& account) {
        return account.isPersons && std::ranges::find(account.homes, home) != account.homes.end();
    });
}

/// The homes named by accounts, except the user's. Homes of services are system folders, which also contain
/// data of applications.
std::vector<Path> homesOfOthers(const FileSystem& files, const std::vector<Account>& accounts,
                                const Path& own) {
    std::vector<Path> others;
    const auto add = [&](const Path& home, bool isPersons) {
        if (home.isAbsolute() && home != own && (isPersons || !isSystemPlace(home))) others.push_back(home);
    };
    for (const auto& account : accounts)
        for (const auto& home : account.homes) {
            add(home, account.isPersons);
            if (const auto real = files.resolve(home); real && *real != home) add(*real, account.isPersons);
        }
    return others;
}

/// A real folder at its real location, regardless of letter case and Unicode normalization.
bool isReached(const FileSystem& files, const Path& home) {
    const auto itself = files.info(home);
    const auto real = files.resolve(home);
    return itself && itself->kind == FileKind::directory && real
           && folded(real->string()) == folded(home.string());
}

bool isHome(const FileSystem& files, const std::vector<Account>& accounts, const Path& home) {
    const bool isInUsers =
        lowercased(home.parent().string()) == "/users" && lowercased(home.lastComponent()) != "shared";
    return isReached(files, home) && (isInUsers || isNamedByAccount(accounts, home));
}

} // namespace

tl::expected<UserEnvironment, VolumeUserError> findVolumeUser(const FileSystem& files,
                                                              const std::optional<Path>& home) {
    using Kind = VolumeUserError::Kind;
    auto candidates = home ? std::vector<Path>{home->standardized()} : homes(files);
    if (candidates.empty()) return tl::unexpected(whyNoHome(files));
    if (candidates.size() > 1)
        return tl::unexpected(VolumeUserError{Kind::severalHomes, std::move(candidates), {}});

    const auto& chosen = candidates.front();
    const auto info = files.infoFollowingLinks(chosen);
    if (!chosen.isAbsolute()) return tl::unexpected(VolumeUserError{Kind::notAPath, {}, chosen});
    const auto parts = home.value_or(chosen).components();
    if (std::ranges::find(parts, "..") != parts.end())
        return tl::unexpected(VolumeUserError{Kind::indirect, {}, *home});
    if (isLink(files, chosen)) return tl::unexpected(VolumeUserError{Kind::linked, {}, chosen});
    if (!info || info->kind != FileKind::directory)
        return tl::unexpected(VolumeUserError{Kind::notAFolder, {}, chosen});
    const auto accounts = readAccounts(files);
    if (!isHome(files, accounts, chosen)) return tl::unexpected(VolumeUserError{Kind::notAHome, {}, chosen});
    UserEnvironment user{.home = chosen,
                         .userID = info->ownerID,
                         .cacheFolder = {},
                         .temporaryFolder = {},
                         .otherHomes = homesOfOthers(files, accounts, chosen)};
    findTemporaryFolders(files, user);
    return user;
}

} // namespace tidwen
