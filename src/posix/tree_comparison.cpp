#include "posix/tree_comparison.h"

#include "platform/file_system.h"
#include "posix/comparison_limit.h"
#include "posix/extended_attributes.h"
#include "posix/file_content.h"
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
#include <tl/expected.hpp>

namespace tidwen {

namespace {

/// Ends the walk at the first difference, which is not a system error.
constexpr int difference = -1;

int answer(bool same) {
    return same ? 0 : difference;
}

class TreeComparison : public TreeVisitor {
  public:
    TreeComparison(int folder, const char* name, Compared compared, Reading reading)
        : folder_(folder), name_(name), compared_(compared), reading_(reading) {}

    int item(const TreeItem& item) override {
        if (isLimited() && ComparisonLimit::isStopped()) return ECANCELED;
        const auto copy = statItem(folder(), nameFor(item));
        if (!copy) return absent(copy.error());
        if (!haveSameMetadata(item.status, *copy, true)) return difference;
        if (compared_ == Compared::whole && !isLinkedAlike(item.status, *copy)) return difference;
        if (S_ISREG(item.status.st_mode)) return compareFiles(item, *copy);
        if (!S_ISLNK(item.status.st_mode)) return 0;
        const auto target = readLinkTarget(item.folder, item.name);
        if (!target) return target.error();
        return answer(target == readLinkTarget(folder(), nameFor(item)));
    }

    int enter(const TreeItem& item, int opened) override {
        const bool whole = compared_ == Compared::whole;
        auto copy = statItem(folder(), nameFor(item));
        if (!copy) return absent(copy.error());
        // A removal opens a folder to its owner before it empties it.
        if (!whole && (item.status.st_mode & S_IRWXU) == S_IRWXU) copy->st_mode |= S_IRWXU;
        if (!haveSameMetadata(item.status, *copy, whole)) return difference;
        Descriptor other = openFolderToRead(folder(), nameFor(item));
        if (!other.isOpen()) return errno;
        if (const int fault = compareAttributes(opened, other.get())) return fault;
        // Entries missing in the copy are detected when they are visited.
        if (whole) {
            const auto mine = entriesOf(opened), its = entriesOf(other.get());
            if (!mine || !its) return mine ? its.error() : mine.error();
            if (mine->size() != its->size()) return difference;
        }
        if (copies_) return copies_->push(std::move(other)) ? 0 : ESTALE;
        copies_.emplace(std::move(other));
        return 0;
    }

    int leave(const struct stat&, int) override { return copies_->pop() ? 0 : ESTALE; }

  private:
    int folder() const { return copies_ ? copies_->current() : folder_; }
    const char* nameFor(const TreeItem& item) const { return copies_ ? item.name : name_; }

    static int absent(int fault) { return fault == ENOENT ? difference : fault; }

    static int compareAttributes(int a, int b) {
        const auto mine = extendedAttributesOf(a), its = extendedAttributesOf(b);
        if (!mine || !its) return mine ? its.error() : mine.error();
        return answer(*mine == *its);
    }

    /// Names of one file must also be names of one file in the copy.
    bool isLinkedAlike(const struct stat& item, const struct stat& copy) {
        if (item.st_nlink < 2) return true;
        return linked_.emplace(item.st_ino, copy.st_ino).first->second == copy.st_ino;
    }

    bool isLimited() const { return reading_ == Reading::withinLimit; }

    /// A change of either file, whatever its times say, makes it another one.
    static FileInfo identityOf(const struct stat& file) {
        constexpr std::int64_t perSecond = 1'000'000'000;
        const auto changed = changeTime(file);
        return {.size = static_cast<std::uint64_t>(file.st_size),
                .modifiedNanoseconds =
                    static_cast<std::int64_t>(changed.tv_sec) * perSecond + changed.tv_nsec,
                .device = static_cast<std::uint64_t>(file.st_dev),
                .inode = static_cast<std::uint64_t>(file.st_ino),
                .createdNanoseconds = {},
                .addedNanoseconds = {}};
    }

    int compareContent(int mine, int its, const struct stat& item, const struct stat& copy) const {
        const auto size = static_cast<std::uint64_t>(item.st_size);
        if (!isLimited()) {
            const auto same = haveSameContent(mine, its, size, {});
            return same ? answer(*same) : same.error();
        }
        const auto a = identityOf(item), b = identityOf(copy);
        if (const auto known = ComparisonLimit::known(a, b)) return answer(*known);
        const auto same = haveSameContent(mine, its, size, [](std::uint64_t free) {
            return !ComparisonLimit::isStopped() && ComparisonLimit::allowsFree(free);
        });
        if (!same) return same.error();
        ComparisonLimit::add(a, b, *same);
        return answer(*same);
    }

    int compareFiles(const TreeItem& item, const struct stat& copy) const {
        constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        const Descriptor mine(::openat(item.folder, item.name, flags));
        if (!mine.isOpen()) return errno;
        const Descriptor its(::openat(folder(), nameFor(item), flags));
        if (!its.isOpen()) return errno;
        if (const int fault = compareAttributes(mine.get(), its.get())) return fault;
        return compareContent(mine.get(), its.get(), item.status, copy);
    }

    int folder_;
    const char* name_;
    Compared compared_;
    Reading reading_;
    std::optional<FolderStack> copies_;
    std::map<ino_t, ino_t> linked_;
};

} // namespace

OsResult<bool> isSameTree(int folder, const char* name, int copyFolder, const char* copyName,
                          Compared compared, Reading reading) {
    TreeComparison comparison(copyFolder, copyName, compared, reading);
    const int fault = walkTree(folder, name, comparison);
    if (fault == difference) return false;
    if (fault) return tl::unexpected(fault);
    return true;
}

} // namespace tidwen
