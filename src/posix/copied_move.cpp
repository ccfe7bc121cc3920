#include "posix/copied_move.h"

#include "base/descriptor.h"
#include "base/numbered_name.h"
#include "base/path.h"
#include "posix/durable_write.h"
#include "posix/exclusive_rename.h"
#include "posix/file_faults.h"
#include "posix/file_lock.h"
#include "posix/flush.h"
#include "posix/item_description.h"
#include "posix/tree_comparison.h"
#include "posix/tree_copy.h"
#include "posix/tree_record.h"
#include "posix/tree_removal.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

/// Give up with this many remains of one item; another move would only make it worse.
constexpr int lastAside = 9;

constexpr std::string_view asidePrefix = ".tidwen-moved";

/// The number comes before the hyphen; after it, it could be the beginning of another item's name.
std::string asideName(const std::string& name, int number) {
    return nameBeside(fmt::format("{}{}-", asidePrefix, number == 1 ? "" : std::to_string(number)), name);
}

/// An item set aside, locked against other processes.
struct LockedAside {
    std::string name;
    Descriptor lock;
};

/// `busy` if another process has one of them: it is in the middle of the move, and empties or returns it.
FileResult<std::vector<LockedAside>> lockAside(const MoveEnd& from) {
    const int folder = from.place.folder.get();
    std::vector<LockedAside> locked;
    for (auto& name : namesAside(folder, from.place.name)) {
        auto lock = tryLockItem(folder, name.c_str());
        if (lock)
            locked.push_back({std::move(name), *std::move(lock)});
        else if (lock.error() != ENOENT)
            return failed(from.path.parent() / name, lock.error());
    }
    return locked;
}

/// Gives an item that was set aside its own name again. If that has been taken meanwhile, by an application
/// that created its folder again, it gets a visible name beside it, because no one would find a hidden one.
FileResult<Path> giveVisibleName(const MoveEnd& from, const std::string& aside) {
    const int folder = from.place.folder.get();
    const auto rename = [&](const std::string& name) {
        return renameExclusively(folder, aside.c_str(), folder, name.c_str());
    };
    int fault = rename(from.place.name);
    Path place = from.path;
    for (int number = 2; fault == EEXIST && number <= lastNumberTried; ++number) {
        place = numberedName(from.path, number);
        fault = rename(place.lastComponent());
    }
    if (fault) return failed(from.path, fault);
    flushFolder(folder);
    return place;
}

/// If the item's own folder is also mounted elsewhere, it can contain the destination: the copy would then be
/// copied again and again until names or disk space run out.
bool liesInside(int folder, dev_t device, const TreeRecord& item) {
    Descriptor current = openFolderToSearch(folder, ".");
    for (ItemIdentity last; current.isOpen();) {
        const auto identity = identifyOpen(current.get());
        if (!identity || *identity == last) return false; // the root is its own parent
        if (identity->device == device && item.holdsFolder(identity->inode)) return true;
        last = *identity;
        current = openFolderToSearch(current.get(), "..");
    }
    return false;
}

/// One move and the names it uses. The intermediate names are derived from the two ends, so that they are
/// found again after a crash.
class CopiedMove {
  public:
    CopiedMove(const MoveEnd& from, const MoveEnd& to) : from_(from), to_(to) {}

    MoveResult run() {
        if (auto settled = settle(); !settled) return settled;
        if (isTaken(target(), copy_.c_str())) return refused(to_.path.parent() / copy_, FileFault::busy);
        if (isTaken(target(), finalName())) return refused(to_.path, FileFault::exists);
        // Check first, to avoid a pointless copy.
        if (::faccessat(source(), ".", W_OK | X_OK, AT_EACCESS) != 0) return failed(from_.path, errno);
        if (::faccessat(target(), ".", W_OK | X_OK, AT_EACCESS) != 0) return failed(to_.path, errno);
        const auto before = TreeRecord::of(source(), original());
        if (!before) return failed(from_.path, before.error());
        const auto item = statItem(source(), original());
        if (item && liesInside(target(), item->st_dev, *before))
            return refused(to_.path, FileFault::otherDisk);
        if (auto copied = makeCopy(); !copied) {
            if (claim_.isOpen()) dropCopy(); // else the copy is not this move's
            return tl::unexpected(copied.error());
        }
        return exchange(*before);
    }

    MoveResult settle() {
        const auto aside = lockAside(from_);
        if (!aside) return tl::unexpected(aside.error());
        finishRenamesByLink(*aside);
        std::optional<std::string> unsettled; // the newest, which belongs to this move if any does
        std::optional<MoveRemains> remains;
        for (const auto& each : *aside) {
            if (!isTaken(source(), each.name.c_str())) continue; // it was a second name
            const auto completion = complete(each.name);
            if (!completion) return tl::unexpected(completion.error());
            if (completion->remains) remains = completion->remains;
            if (!completion->isThisMoves) unsettled = each.name;
        }
        const bool isPlaced = isTaken(target(), finalName()), isCopied = isTaken(target(), copy_.c_str());
        if (unsettled && (isCopied || !isPlaced)) return settleWithoutWholeCopy(*unsettled, isCopied);
        if (unsettled) return remainsAt(*unsettled, FileFault::busy);
        if (!isCopied) return remains;
        if (isTaken(source(), original())) {
            dropCopy();
            return remains;
        }
        // Our own crash cannot leave a copy without an original.
        if (!isPlaced) return refused(from_.path, FileFault::missing);
        return remains;
    }

  private:
    int source() const { return from_.place.folder.get(); }
    int target() const { return to_.place.folder.get(); }
    const char* original() const { return from_.place.name.c_str(); }
    const char* finalName() const { return to_.place.name.c_str(); }

    /// Without an exclusive rename, a kill leaves both names of a file.
    void finishRenamesByLink(const std::vector<LockedAside>& aside) {
        finishLinkedRename(target(), copy_.c_str(), target(), finalName());
        for (const auto& each : aside)
            finishLinkedRename(source(), each.name.c_str(), source(), original());
    }

    MoveRemains remainsAt(const std::string& aside, FileFault fault) const {
        return {.place = from_.path.parent() / aside, .fault = fault};
    }

    /// That of this move, or what a crash left. The copy that another process is making stays.
    void dropCopy() {
        if (isTaken(target(), copy_.c_str()) && (claim_.isOpen() || claimCopy()))
            removeTree(target(), copy_.c_str());
        flushFolder(target());
    }

    bool claimCopy() {
        auto claimed = tryLockItem(target(), copy_.c_str());
        // One without read permission is complete and has lost its maker.
        if (!claimed) return claimed.error() == EACCES;
        claim_ = *std::move(claimed);
        return true;
    }

    FileResult<void> makeCopy() {
        claim_ = Descriptor();
        if (const int fault = copyTree(source(), original(), target(), copy_.c_str(), claim_)) {
            const bool isTargets = fault == ENOSPC || fault == EDQUOT || fault == ENOTSUP || fault == EROFS;
            return failed(isTargets ? to_.path : from_.path, fault);
        }
        if (const int fault = flushDisk(target())) return failed(to_.path, fault);
        const auto same = isSameTree(source(), original(), target(), copy_.c_str(), Compared::whole);
        if (!same) return failed(from_.path, same.error());
        if (!*same)
            return failed(from_.path, EBUSY); // it is being written to, or the disk does not store all of it
        return {};
    }

    /// From here on the original is the item that was set aside. It is locked until it is removed, so that
    /// the recovery of another process does not take it for one that a kill left.
    MoveResult exchange(const TreeRecord& before) {
        const auto lock = tryLockItem(source(), original());
        std::string aside;
        int fault = lock ? EEXIST : lock.error();
        for (int number = 1; fault == EEXIST && number <= lastAside; ++number) {
            aside = asideName(from_.place.name, number);
            fault = renameExclusively(source(), original(), source(), aside.c_str());
        }
        if (fault) {
            dropCopy();
            return failed(from_.path, fault);
        }
        flushFolder(source());
        const auto now = TreeRecord::of(source(), aside.c_str());
        if (!now || !(*now == before)) return putBack(aside, from_.path, now ? EBUSY : now.error());
        if (const int refusal = renameExclusively(target(), copy_.c_str(), target(), finalName()))
            return putBack(aside, to_.path, refusal);
        return removeAside(aside, before);
    }

    MoveResult putBack(const std::string& aside, const Path& culprit, int reason) {
        auto returned = returnAside(aside);
        return returned ? failed(culprit, reason) : returned;
    }

    /// The error carries the new name when its own was taken.
    MoveResult returnAside(const std::string& aside) {
        const auto place = giveVisibleName(from_, aside);
        if (!place) return tl::unexpected(place.error());
        dropCopy();
        if (*place != from_.path) return refused(*place, FileFault::exists);
        return {};
    }

    /// The item is complete at its destination, so a failed removal does not undo the move. Nothing is
    /// removed before the new name is flushed.
    std::optional<MoveRemains> removeAside(const std::string& aside, const TreeRecord& known) {
        if (const int fault = flushFolder(target())) return remainsAt(aside, faultOf(fault));
        const int fault = removeTree(source(), aside.c_str(), &known);
        flushFolder(source());
        if (!isTaken(source(), aside.c_str())) {
            if (fault == 0) return std::nullopt;
            return MoveRemains{.place = from_.path, .fault = FileFault::busy};
        }
        return remainsAt(aside, fault == 0 || fault == ENOTEMPTY ? FileFault::busy : faultOf(fault));
    }

    struct Completion {
        bool isThisMoves = false; ///< what is aside is this move's, and its copy is complete
        std::optional<MoveRemains> remains = {};
    };

    FileResult<Completion> complete(const std::string& aside) {
        const bool isPlaced = isTaken(target(), finalName());
        if (!isPlaced && !isTaken(target(), copy_.c_str())) return {};
        const auto known = TreeRecord::of(source(), aside.c_str());
        if (!known && !isPlaced) return failed(from_.path, known.error());
        if (!known) return Completion{true, remainsAt(aside, faultOf(known.error()))};
        const auto compared = isPlaced ? Compared::remains : Compared::whole;
        const char* copy = isPlaced ? finalName() : copy_.c_str();
        if (!isSameTree(source(), aside.c_str(), target(), copy, compared).value_or(false))
            return Completion{};
        if (!isPlaced) {
            if (const int fault = renameExclusively(target(), copy, target(), finalName()))
                return failed(to_.path, fault);
        }
        return Completion{true, removeAside(aside, *known)};
    }

    /// Puts the original back. If an item has its old name, too, and nothing was copied, what is aside are
    /// remains of an earlier move to another destination.
    MoveResult settleWithoutWholeCopy(const std::string& aside, bool isCopied) {
        if (!isCopied && isTaken(source(), original())) return {};
        return returnAside(aside);
    }

    const MoveEnd& from_;
    const MoveEnd& to_;
    const std::string copy_ = growingCopyName(to_.place.name);
    Descriptor claim_; ///< the copy, locked, while this move makes or removes it
};

} // namespace

std::string growingCopyName(const std::string& name) {
    return nameBeside(growingCopyPrefix, name);
}

std::optional<std::string> nameOnItsWay(std::string_view entry) {
    if (entry.starts_with(growingCopyPrefix)) return std::string(entry.substr(growingCopyPrefix.size()));
    if (!entry.starts_with(asidePrefix)) return std::nullopt;
    entry.remove_prefix(asidePrefix.size());
    if (!entry.empty() && entry.front() >= '2' && entry.front() <= '0' + lastAside) entry.remove_prefix(1);
    return entry.starts_with('-') ? std::optional(std::string(entry.substr(1))) : std::nullopt;
}

MoveResult moveByCopy(const MoveEnd& from, const MoveEnd& to) {
    return CopiedMove(from, to).run();
}

MoveResult settleMoveByCopy(const MoveEnd& from, const MoveEnd& to) {
    const int source = from.place.folder.get(), target = to.place.folder.get();
    if (finishLinkedRename(source, from.place.name.c_str(), target, to.place.name.c_str())) {
        flushFolder(target);
        flushFolder(source);
        return {};
    }
    return CopiedMove(from, to).settle();
}

FileResult<std::vector<Path>> revealAside(const MoveEnd& from) {
    const auto aside = lockAside(from);
    if (!aside) return tl::unexpected(aside.error());
    std::vector<Path> places;
    places.reserve(aside->size());
    for (const auto& each : *aside) {
        auto place = giveVisibleName(from, each.name);
        if (!place) return tl::unexpected(place.error());
        places.push_back(std::move(*place));
    }
    return places;
}

std::vector<std::string> namesAside(int folder, const std::string& name) {
    std::vector<std::string> names;
    for (int number = 1; number <= lastAside; ++number)
        if (auto aside = asideName(name, number); isTaken(folder, aside.c_str()))
            names.push_back(std::move(aside));
    return names;
}

} // namespace tidwen
