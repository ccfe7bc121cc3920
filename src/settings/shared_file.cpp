#include "settings/shared_file.h"

#include "base/ownership.h"
#include "posix/file_faults.h"
#include "posix/flush.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

Descriptor open(const fs::path& path, int flags) {
    return Descriptor(::open(path.c_str(), flags | O_CLOEXEC));
}

/// A folder to create something in, and the owner of what is created.
struct Parent {
    Descriptor folder;
    Ownership owner;
};

OsResult<Parent> openParent(const fs::path& path) {
    auto folder = open(path.parent_path(), O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen()) return tl::unexpected(errno);
    const auto owner = ownershipOf(folder.get());
    if (!owner) return tl::unexpected(owner.error());
    return Parent{std::move(folder), *owner};
}

/// Creates a private file, which must not exist yet.
Descriptor createFile(const fs::path& path) {
    const auto parent = openParent(path);
    if (!parent) return {};
    const auto name = path.filename();
    const int folder = parent->folder.get();
    Descriptor file(::openat(folder, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.isOpen())
        if (const int fault = giveFile(file.get(), parent->owner)) {
            ::unlinkat(folder, name.c_str(), 0);
            file.close();
            errno = fault;
        }
    return file;
}

bool makeFolders(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return true;
    if (!folder.has_relative_path() || !makeFolders(folder.parent_path())) return false;
    const auto parent = openParent(folder);
    if (!parent) return false;
    const auto name = folder.filename();
    if (::mkdirat(parent->folder.get(), name.c_str(), 0700) != 0) return errno == EEXIST;
    return giveNewFolder(parent->folder.get(), name.c_str(), parent->owner) == 0;
}

/// A link's owner decides what root reads and writes through it, so it may only lead to what that owner has
/// anyway.
bool isLinkToAnothers(const fs::path& link) {
    struct stat self {
    }, target{};
    return ::lstat(link.c_str(), &self) == 0 && ::stat(link.c_str(), &target) == 0 && self.st_uid != 0
           && self.st_uid != target.st_uid;
}

/// The file, or a folder in its path.
bool leadsToAnothers(const fs::path& file) {
    fs::path reached;
    for (const auto& part : file) {
        reached /= part;
        if (isLinkToAnothers(reached)) return true;
    }
    return false;
}

} // namespace

SharedFile::SharedFile(const fs::path& path, Links links) : path_(path), given_(path) {
    if (links == Links::kept) return;
    std::error_code error;
    isForeignLink_ = ::geteuid() == 0 && leadsToAnothers(fs::absolute(path, error));
    if (auto target = fs::weakly_canonical(path, error); !error) path_ = std::move(target);
}

SharedFile::Fault SharedFile::faultOf(int osCode) const {
    std::error_code error;
    if (osCode == ENOENT) return fs::is_symlink(given_, error) ? Fault::linkToNothing : Fault::missing;
    return osCode == EACCES || osCode == EPERM ? Fault::denied : Fault::unreadable;
}

tl::expected<SharedFile::Version, SharedFile::Fault> SharedFile::version() const {
    struct stat info {};
    if (::stat(path_.c_str(), &info) != 0) return tl::unexpected(faultOf(errno));
    std::error_code error;
    const auto modified = fs::last_write_time(path_, error).time_since_epoch().count();
    if (error) return tl::unexpected(Fault::unreadable);
    return Version{static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
                   static_cast<std::uint64_t>(info.st_size), static_cast<std::int64_t>(modified)};
}

tl::expected<std::string, SharedFile::Fault> SharedFile::read(std::size_t maxBytes) const {
    if (isForeignLink_) return tl::unexpected(Fault::foreignLink);
    const auto file = open(path_, O_RDONLY | O_NONBLOCK); // a pipe of that name must not block
    if (!file.isOpen()) return tl::unexpected(faultOf(errno));
    struct stat info {};
    if (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return tl::unexpected(Fault::unreadable);
    if (info.st_size < 0 || static_cast<std::uint64_t>(info.st_size) > maxBytes)
        return tl::unexpected(Fault::tooLarge);

    std::string content(static_cast<std::size_t>(info.st_size), '\0');
    for (std::size_t have = 0; have < content.size();) {
        const auto got = ::read(file.get(), content.data() + have, content.size() - have);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return tl::unexpected(Fault::unreadable);
        if (got == 0) content.resize(have);
        have += static_cast<std::size_t>(got);
    }
    return content;
}

bool SharedFile::replace(std::string_view content) const {
    const auto fresh = sibling("new");
    ::unlink(fresh.c_str()); // left by a crash
    {
        const auto file = createFile(fresh);
        if (!file.isOpen()) return false;
        if (writeFully(file.get(), content) != 0 || flushFile(file.get()) != 0) {
            ::unlink(fresh.c_str());
            return false;
        }
    }
    if (::rename(fresh.c_str(), path_.c_str()) != 0) {
        ::unlink(fresh.c_str());
        return false;
    }
    // Without this a crash may lose the new name, though not the content.
    const auto folder = open(path_.parent_path(), O_RDONLY | O_DIRECTORY);
    return folder.isOpen() && flushFolder(folder.get()) == 0;
}

bool SharedFile::makeFolder() const {
    return makeFolders(path_.parent_path());
}

SharedFile::Lock SharedFile::lock(std::chrono::milliseconds patience) const {
    if (isForeignLink_ || !makeFolder()) return {{}, patience};
    const auto path = sibling("lock");
    auto file = createFile(path);
    if (!file.isOpen() && errno == EEXIST) file = open(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    return {std::move(file), patience};
}

SharedFile::Lock SharedFile::lockFolder() const {
    return {open(path_.parent_path(), O_RDONLY | O_DIRECTORY), usualPatience};
}

SharedFile::Lock::Lock(Descriptor file, std::chrono::milliseconds patience) : file_(std::move(file)) {
    constexpr std::chrono::milliseconds pause{10};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (file_.isOpen() && ::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        isBusy_ = errno == EWOULDBLOCK;
        if (!isBusy_ || std::chrono::steady_clock::now() >= deadline)
            file_.close();
        else
            std::this_thread::sleep_for(pause);
    }
    if (isHeld()) isBusy_ = false;
}

fs::path SharedFile::sibling(const std::string& ending) const {
    auto path = path_;
    path += "." + ending;
    return path;
}

} // namespace tidwen
