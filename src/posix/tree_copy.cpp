#include "posix/tree_copy.h"

#include "posix/extended_attributes.h"
#include "posix/file_content.h"
#include "posix/file_lock.h"
#include "posix/flush.h"
#include "posix/folder_listing.h"
#include "posix/folder_stack.h"
#include "posix/item_description.h"
#include "posix/item_metadata.h"
#include "posix/tree_walk.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <map>
#include <optional>
#include <string>

namespace tidwen {

namespace {

class TreeCopy : public TreeVisitor {
  public:
    TreeCopy(int folder, const char* name, Descriptor& claim) : folder_(folder), name_(name), claim_(claim) {}

    int item(const TreeItem& item) override {
        if (item.status.st_nlink > 1) {
            const auto known = linked_.find(item.status.st_ino);
            if (known != linked_.end()) return linkAgain(known->second, item.name);
            if (top_.isOpen()) linked_.emplace(item.status.st_ino, inside_ + item.name);
        }
        if (S_ISREG(item.status.st_mode)) return copyFile(item);
        if (S_ISLNK(item.status.st_mode)) return copyLink(item);
        return copySpecial(item);
    }

    int enter(const TreeItem& item, int) override {
        const char* name = nameFor(item);
        // Private until it gets its own permissions.
        if (::mkdirat(folder(), name, 0700) != 0) return errno;
        Descriptor made = openFolderToRead(folder(), name);
        if (!made.isOpen()) return errno;
        if (copies_) {
            inside_ += std::string(item.name) + "/";
            return copies_->push(std::move(made)) ? 0 : ESTALE;
        }
        top_ = openFolderToRead(made.get(), ".");
        if (!top_.isOpen()) return errno;
        claim_ = Descriptor(::fcntl(made.get(), F_DUPFD_CLOEXEC, 0));
        copies_.emplace(std::move(made));
        return lockClaim();
    }

    int leave(const struct stat& status, int opened) override {
        if (const int fault = copyMetadata(opened, status, copies_->current())) return fault;
        if (!inside_.empty()) inside_.erase(inside_.find_last_of('/', inside_.size() - 2) + 1);
        return copies_->pop() ? 0 : ESTALE;
    }

  private:
    bool isTop() const { return !copies_; }
    int folder() const { return isTop() ? folder_ : copies_->current(); }
    const char* nameFor(const TreeItem& item) const { return isTop() ? name_ : item.name; }

    int copyFile(const TreeItem& item) {
        const Descriptor from(
            ::openat(item.folder, item.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!from.isOpen()) return errno;
        struct stat opened {};
        if (::fstat(from.get(), &opened) != 0) return errno;
        if (opened.st_ino != item.status.st_ino || opened.st_dev != item.status.st_dev) return ESTALE;
        const Descriptor to(
            ::openat(folder(), nameFor(item), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!to.isOpen()) return errno;
        if (isTop()) {
            claim_ = Descriptor(::fcntl(to.get(), F_DUPFD_CLOEXEC, 0));
            if (const int fault = lockClaim()) return fault;
        }
        const auto size = static_cast<std::uint64_t>(item.status.st_size);
        if (const int fault = copyContent(from.get(), to.get(), size)) return fault;
        if (const int fault = copyMetadata(from.get(), item.status, to.get())) return fault;
#ifndef __linux__
        if (retryOnEintr([&] { return ::fsync(to.get()); }) != 0)
            return errno; // elsewhere flushDisk flushes everything
#endif
        return 0;
    }

    int lockClaim() const {
        if (!claim_.isOpen()) return errno;
        return tryLock(claim_.get()) == EWOULDBLOCK ? EBUSY : 0; // some disks have no locks
    }

    int copyLink(const TreeItem& item) {
        const auto target = readLinkTarget(item.folder, item.name);
        if (!target) return target.error();
        if (::symlinkat(target->c_str(), folder(), nameFor(item)) != 0) return errno;
#ifdef O_SYMLINK
        // A Mac's links have attributes, such as quarantine.
        const Descriptor from(::openat(item.folder, item.name, O_RDONLY | O_SYMLINK | O_CLOEXEC));
        const Descriptor to(::openat(folder(), nameFor(item), O_RDONLY | O_SYMLINK | O_CLOEXEC));
        if (!from.isOpen() || !to.isOpen()) return errno;
        if (const int fault = copyExtendedAttributes(from.get(), to.get())) return fault;
#endif
        return applyMetadata(item.status, folder(), nameFor(item));
    }

    int copySpecial(const TreeItem& item) {
#ifdef __linux__
        if (::mknodat(folder(), nameFor(item), item.status.st_mode & S_IFMT, item.status.st_rdev) != 0)
            return errno == EPERM ? ENOTSUP : errno;
#else
        // A Mac lets root alone make devices and makes no sockets by name.
        if (!S_ISFIFO(item.status.st_mode)) return ENOTSUP;
        if (::mkfifoat(folder(), nameFor(item), S_IRUSR | S_IWUSR) != 0) return errno;
#endif
        return applyMetadata(item.status, folder(), nameFor(item));
    }

    int linkAgain(const std::string& first, const char* name) {
        return ::linkat(top_.get(), first.c_str(), folder(), name, 0) == 0 ? 0 : errno;
    }

    int folder_;
    const char* name_;
    Descriptor& claim_;
    Descriptor top_;                      ///< of the copy, when it is a folder
    std::optional<FolderStack> copies_;   ///< parallel to the original's folders
    std::string inside_;                  ///< the path from the top, with a slash after each name
    std::map<ino_t, std::string> linked_; ///< path of the first copied name of a file with several
};

} // namespace

int copyTree(int fromFolder, const char* from, int toFolder, const char* to, Descriptor& claim) {
    TreeCopy copy(toFolder, to, claim);
    return walkTree(fromFolder, from, copy);
}

} // namespace tidwen
