#include "settings/shared_file.h"

#include "base/descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

Descriptor open(const fs::path& path, int flags) {
    return Descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0600));
}

bool writeAll(int descriptor, std::string_view rest) {
    while (!rest.empty()) {
        const auto written = ::write(descriptor, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool makeFolders(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return true;
    if (!folder.has_relative_path() || !makeFolders(folder.parent_path())) return false;
    return ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

/// Without this the new name may be lost in a crash, though the content is not.
bool flushFolder(const fs::path& folder) {
    const auto opened = open(folder, O_RDONLY | O_DIRECTORY);
    return opened.isOpen() && ::fsync(opened.get()) == 0;
}

} // namespace

SharedFile::SharedFile(const fs::path& path, Links links) : path_(path) {
    if (links == Links::kept) return;
    std::error_code error;
    isLinked_ = fs::is_symlink(path, error);
    if (auto target = fs::weakly_canonical(path, error); !error) path_ = std::move(target);
}

tl::expected<SharedFile::Version, SharedFile::Fault> SharedFile::version() const {
    struct stat info {};
    if (::stat(path_.c_str(), &info) != 0)
        return tl::unexpected(errno == ENOENT ? Fault::missing : Fault::unreadable);
    std::error_code error;
    const auto modified = fs::last_write_time(path_, error).time_since_epoch().count();
    if (error) return tl::unexpected(Fault::unreadable);
    return Version{static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
                   static_cast<std::uint64_t>(info.st_size), static_cast<std::int64_t>(modified)};
}

tl::expected<std::string, SharedFile::Fault> SharedFile::read(std::size_t maxBytes) const {
    const auto file = open(path_, O_RDONLY | O_NONBLOCK); // a pipe of that name must not hold us up
    if (!file.isOpen()) return tl::unexpected(errno == ENOENT ? Fault::missing : Fault::unreadable);
    struct stat info {};
    if (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return tl::unexpected(Fault::unreadable);
    if (info.st_size < 0 || static_cast<std::uint64_t>(info.st_size) > maxBytes)
        return tl::unexpected(Fault::unreadable);

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
    ::unlink(fresh.c_str()); // what a crash left behind
    {
        const auto file = open(fresh, O_WRONLY | O_CREAT | O_EXCL);
        if (!file.isOpen()) return false;
        if (!writeAll(file.get(), content) || ::fsync(file.get()) != 0) {
            ::unlink(fresh.c_str());
            return false;
        }
    }
    if (::rename(fresh.c_str(), path_.c_str()) != 0) {
        ::unlink(fresh.c_str());
        return false;
    }
    return flushFolder(path_.parent_path());
}

std::optional<fs::path> SharedFile::setAside(const std::string& suffix) const {
    if (isLinked_) return std::nullopt; // whatever a link names by mistake must not lose its name
    constexpr int attempts = 1000;
    for (int n = 1; n <= attempts; ++n) {
        auto target = sibling(n == 1 ? suffix : suffix + "-" + std::to_string(n));
        std::error_code error;
        if (fs::symlink_status(target, error).type() != fs::file_type::not_found) continue;
        if (::rename(path_.c_str(), target.c_str()) != 0) return std::nullopt;
        return target;
    }
    return std::nullopt;
}

SharedFile::Lock SharedFile::lock() const {
    if (!makeFolders(path_.parent_path())) return Lock(-1);
    return Lock(::open(sibling("lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
}

SharedFile::Lock SharedFile::lockFolder() const {
    return Lock(::open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

SharedFile::Lock::Lock(int descriptor) : descriptor_(descriptor) {
    while (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) != 0)
        if (errno != EINTR) {
            ::close(descriptor_);
            descriptor_ = -1;
        }
}

SharedFile::Lock::~Lock() {
    if (descriptor_ >= 0) ::close(descriptor_); // gives the lock up
}

fs::path SharedFile::sibling(const std::string& ending) const {
    auto path = path_;
    path += "." + ending;
    return path;
}

} // namespace tidwen
