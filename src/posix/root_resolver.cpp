#include "posix/root_resolver.h"

#include "base/path.h"
#include "posix/file_faults.h"
#include "posix/item_description.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <tl/expected.hpp>
#include <vector>
#ifdef __linux__
#include <sys/syscall.h>
#endif

namespace tidwen {

namespace {

#if defined(O_PATH)
constexpr int searchFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
#elif defined(O_SEARCH)
constexpr int searchFlags = O_SEARCH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int searchFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif
constexpr int lookFlags = searchFlags & ~O_DIRECTORY; ///< for an item of any kind that is not read

// The kernel's own limits, so that both ways refuse the same paths.
constexpr int linkLimit = 40;
constexpr std::size_t pathLimit = 4096;

#ifdef SYS_openat2
// The kernel's struct open_how and its RESOLVE_ flags; not every libc has a header for them.
struct OpenHow {
    std::uint64_t flags = 0;
    std::uint64_t mode = 0;
    std::uint64_t resolve = 0;
};
constexpr std::uint64_t noMagicLinks = 0x02, noSymbolicLinks = 0x04, beneath = 0x08, inRoot = 0x10;

int openResolved(int folder, const char* path, int flags, std::uint64_t resolve) {
    OpenHow how{.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC), .resolve = noMagicLinks | resolve};
    return static_cast<int>(::syscall(SYS_openat2, folder, path, &how, sizeof how));
}

int openInRoot(int root, const char* path, int flags, std::uint64_t resolve = 0) {
    int result = -1;
    // EAGAIN: something was renamed during a step over "..", so the kernel cannot guarantee that it stayed
    // inside the root.
    for (int attempt = 0; attempt < 100; ++attempt) {
        result = openResolved(root, path, flags, inRoot | resolve);
        if (result >= 0 || (errno != EAGAIN && errno != EINTR)) break;
    }
    return result;
}
#else
constexpr std::uint64_t noSymbolicLinks = 0, beneath = 0;
int openResolved(int, const char*, int, std::uint64_t) {
    errno = ENOSYS;
    return -1;
}
int openInRoot(int, const char*, int, std::uint64_t = 0) {
    errno = ENOSYS;
    return -1;
}
#endif

/// A walk from the root, one component at a time. Holds one folder open and remembers the folders above it by
/// device and inode: ".." is taken only when it leads back there, so a folder moved out of the root meanwhile
/// cannot take the walk with it.
class Walk {
  public:
    enum class ParentLinks { follow, refuse };

    Walk(int root, LastLink last, ParentLinks parents) : root_(root), last_(last), parents_(parents) {}

    /// Returns 0 when the place was found, else the errno.
    int run(const std::string& path) {
        if (path.size() >= pathLimit) return ENAMETOOLONG;
        if (!goToRoot()) return errno;
        addPending(path);
        while (!pending_.empty()) {
            const std::string next = std::move(pending_.back());
            pending_.pop_back();
            if (const int fault = step(next)) return failed_ = next, fault;
            if (!name_.empty()) return 0;
        }
        name_ = ".";
        return 0;
    }

    Place takePlace() { return {std::move(current_), name_}; }

    Path resolved() const {
        std::string text;
        for (const auto& level : levels_)
            text += "/" + level.name;
        if (name_ != ".") text += "/" + name_;
        return Path(text.empty() ? "/" : text);
    }

    /// The path where the walk failed plus what remained, with the links so far resolved.
    Path sought() const {
        Path path("/");
        for (const auto& level : levels_)
            path = path / level.name;
        path = path / failed_;
        for (auto next = pending_.rbegin(); next != pending_.rend(); ++next)
            path = path / *next;
        return path.standardized();
    }

  private:
    struct Level {
        std::string name;
        dev_t device; ///< of the folder that holds this one
        ino_t inode;
    };

    bool goToRoot() {
        levels_.clear();
        current_ = Descriptor(::openat(root_, ".", searchFlags));
        return current_.isOpen();
    }

    /// Puts the components of a text before those still to be walked.
    void addPending(const std::string& text) {
        std::vector<std::string> parts;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find('/', at), text.size());
            if (end > at) parts.push_back(text.substr(at, end - at));
            at = end + 1;
        }
        // "name/" requires a folder, as "name/." does.
        if (!text.empty() && text.back() == '/') parts.emplace_back(".");
        pending_.insert(pending_.end(), std::make_move_iterator(parts.rbegin()),
                        std::make_move_iterator(parts.rend()));
    }

    int step(const std::string& next) {
        if (next == ".") return 0;
        if (next == "..") return levels_.empty() ? 0 : goUp();
        if (!pending_.empty()) return enter(next);
        if (last_ == LastLink::follow) {
            const auto target = readLinkTarget(current_.get(), next.c_str());
            if (target) return follow(*target);
            if (target.error() != EINVAL) return target.error();
        }
        name_ = next;
        return 0;
    }

    int enter(const std::string& next) {
        struct stat holder {};
        if (::fstat(current_.get(), &holder) != 0) return errno;
        Descriptor folder = openFolderToSearch(current_.get(), next.c_str());
        if (folder.isOpen()) {
            levels_.push_back({next, holder.st_dev, holder.st_ino});
            current_ = std::move(folder);
            return 0;
        }
        if (errno != ENOTDIR && errno != ELOOP) return errno;
        const auto target = readLinkTarget(current_.get(), next.c_str());
        if (!target) return target.error() == EINVAL ? ENOTDIR : target.error();
        return parents_ == ParentLinks::refuse ? ELOOP : follow(*target);
    }

    int goUp() {
        Descriptor above(::openat(current_.get(), "..", searchFlags));
        struct stat found {};
        if (!above.isOpen() || ::fstat(above.get(), &found) != 0) return errno;
        if (found.st_dev != levels_.back().device || found.st_ino != levels_.back().inode) return EAGAIN;
        levels_.pop_back();
        current_ = std::move(above);
        return 0;
    }

    int follow(const std::string& target) {
        if (++links_ > linkLimit) return ELOOP;
        if (target.starts_with('/') && !goToRoot()) return errno;
        addPending(target);
        return 0;
    }

    int root_;
    LastLink last_;
    ParentLinks parents_;
    Descriptor current_;
    std::vector<Level> levels_;
    std::vector<std::string> pending_; ///< the next component last
    std::string name_;
    std::string failed_;
    int links_ = 0;
};

} // namespace

Descriptor openFolderToSearch(int folder, const char* name) {
    return Descriptor(::openat(folder, name, searchFlags | O_NOFOLLOW));
}

bool RootResolver::canName(const Path& path) {
    return path.isAbsolute() && path.string().find('\0') == std::string::npos;
}

bool RootResolver::kernelResolves(int root) {
    return Descriptor(openInRoot(root, "/", O_RDONLY | O_DIRECTORY)).isOpen();
}

FileResult<Descriptor> RootResolver::open(const Path& path, int flags, LastLink last) const {
    if (!canName(path)) return refused(path, FileFault::missing);
    if (last == LastLink::keep) flags |= O_NOFOLLOW;
    if (way_ == Way::kernel) {
        Descriptor opened(openInRoot(root_.get(), path.string().c_str(), flags));
        if (!opened.isOpen()) return failed(path, errno);
        return opened;
    }
    auto found = place(path, last);
    if (!found) return tl::unexpected(found.error());
    // The walk has followed every link, so one that is here now was put there meanwhile.
    Descriptor opened(retryOnEintr(
        [&] { return ::openat(found->folder.get(), found->name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC); }));
    if (!opened.isOpen()) return failed(path, errno);
    return opened;
}

FileResult<Place> RootResolver::place(const Path& path, LastLink last) const {
    if (!canName(path)) return refused(path, FileFault::missing);
    const std::string name = path.lastComponent();
    const bool isNamed = !path.isRoot() && name != "." && name != "..";
    if (way_ == Way::kernel && last == LastLink::keep && isNamed && path.string().size() < pathLimit) {
        Descriptor folder(openInRoot(root_.get(), path.parent().string().c_str(), searchFlags));
        if (!folder.isOpen()) return failed(path, errno);
        return Place{std::move(folder), name};
    }
    Walk walk(root_.get(), last, Walk::ParentLinks::follow);
    if (const int fault = walk.run(path.string())) return failed(path, fault);
    return walk.takePlace();
}

FileResult<Place> RootResolver::placeForChange(const Path& path) const {
    if (!canName(path)) return refused(path, FileFault::missing);
    if (path.isRoot()) return refused(path, FileFault::denied);
    const std::string name = path.lastComponent();
    if (path.hasTraversal() || name == ".") return refused(path, FileFault::throughLink);
    if (way_ == Way::kernel) {
        Descriptor folder(
            openInRoot(root_.get(), path.parent().string().c_str(), searchFlags, noSymbolicLinks));
        if (!folder.isOpen()) return failed(path, errno);
        return Place{std::move(folder), name};
    }
    Walk walk(root_.get(), LastLink::keep, Walk::ParentLinks::refuse);
    if (const int fault = walk.run(path.string())) return failed(path, fault);
    return walk.takePlace();
}

std::optional<RootResolver::LooksBelow> RootResolver::looksBelow(const Path& folder) const {
    if (way_ != Way::kernel) return std::nullopt;
    auto opened = open(folder, searchFlags, LastLink::follow);
    if (!opened) return std::nullopt;
    return LooksBelow(std::move(*opened));
}

std::optional<bool> RootResolver::LooksBelow::isThere(const std::string& item) const {
    if (item.empty() || item.find('\0') != item.npos) return std::nullopt;
    const Descriptor opened(
        openResolved(folder_.get(), item.c_str(), lookFlags | O_NOFOLLOW, beneath | noSymbolicLinks));
    if (opened.isOpen()) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    return std::nullopt;
}

FileResult<Path> RootResolver::resolve(const Path& path) const {
    if (!canName(path)) return refused(path, FileFault::missing);
    if (way_ == Way::kernel && path == path.standardized()) {
        // Nearly every path is its own answer: where the kernel meets no link, there is nothing to resolve.
        const Descriptor item(openInRoot(root_.get(), path.string().c_str(), lookFlags, noSymbolicLinks));
        if (item.isOpen()) return path;
        if (errno == ENOENT) return failed(path, ENOENT);
    }
    // Only the walk knows the names on the way; asking the kernel afterwards would require /proc.
    Walk walk(root_.get(), LastLink::follow, Walk::ParentLinks::follow);
    if (const int fault = walk.run(path.string()))
        return failed(fault == ENOENT ? walk.sought() : path, fault);
    return walk.resolved();
}

} // namespace tidwen
