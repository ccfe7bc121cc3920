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
constexpr std::string_view arrivedPrefix = ".tidwen-arrived";

/// The number comes before the hyphen; after it, it could be the beginning of another item's name.
std::string hiddenName(std::string_view prefix, const std::string& name, int number) {
    return nameBeside(fmt::format("{}{}-", prefix, number == 1 ? "" : std::to_string(number)), name);
}

std::vector<std::string> hiddenNames(std::string_view prefix, const std::string& name) {
    std::vector<std::string> names;
    names.reserve(lastAside);
    for (int number = 1; number <= lastAside; ++number)
        names.push_back(hiddenName(prefix, name, number));
    return names;
}

std::vector<std::string> namesTaken(std::string_view prefix, int folder, const std::string& name) {
    auto names = hiddenNames(prefix, name);
    std::erase_if(names, [folder](const std::string& hidden) { return !isTaken(folder, hidden.c_str()); });
    return names;
}

/// An item set aside, locked against other processes.
struct LockedAside {
    std::string name;
    Descriptor lock;
};

/// `busy` if another process has one of them: it is in the middle of the move, and empties or returns it.
FileResult<std::vector<LockedAside>> lockAll(std::string_view prefix, const MoveEnd& from) {
    const int folder = from.place.folder.get();
    std::vector<LockedAside> locked;
    for (auto& name : namesTaken(prefix, folder, from.place.name)) {
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
        auto aside = lockAll(asidePrefix, from_);
        if (!aside) return tl::unexpected(aside.error());
        finishRenamesByLink(*aside);
        const auto arrived = lockAll(arrivedPrefix, from_);
        if (!arrived) return tl::unexpected(arrived.error());
        std::optional<std::string> unsettled; // the newest, which belongs to this move if any does
        auto remains = settleArrived(*arrived);
        bool isCompleted = false;
        for (const auto& each : *aside) {
            if (isCompleted) { // this move had one original, so that is another's
                unsettled = each.name;
                continue;
            }
            const bool wasPlaced = isTaken(target(), finalName());
            const auto completion = complete(each.name);
            if (!completion) return tl::unexpected(completion.error());
            if (completion->remains) remains = completion->remains;
            if (!completion->isThisMoves) unsettled = each.name;
            isCompleted = completion->isThisMoves && !wasPlaced;
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
    void finishRenamesByLink(std::vector<LockedAside>& aside) {
        finishLinkedRename(target(), copy_.c_str(), target(), finalName());
        const auto arrived = namesTaken(arrivedPrefix, source(), from_.place.name);
        std::erase_if(aside, [&](const LockedAside& each) {
            finishLinkedRename(source(), each.name.c_str(), source(), original());
            for (const auto& name : arrived)
                finishLinkedRename(source(), each.name.c_str(), source(), name.c_str());
            return !isTaken(source(), each.name.c_str());
        });
    }

    /// Renames to the first free name with the prefix.
    OsResult<std::string> hide(const char* name, std::string_view prefix) {
        for (int number = 1; number <= lastAside; ++number) {
            auto hidden = hiddenName(prefix, from_.place.name, number);
            const int fault = renameExclusively(source(), name, source(), hidden.c_str());
            if (fault == 0) return hidden;
            if (fault != EEXIST) return tl::unexpected(fault);
        }
        return tl::unexpected(EEXIST);
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
        const auto same =
            isSameTree(source(), original(), target(), copy_.c_str(), Compared::whole, Reading::everything);
        if (!same) return failed(from_.path, same.error());
        if (!*same)
            return failed(from_.path, EBUSY); // it is being written to, or the disk does not store all of it
        return {};
    }

    /// From here on the original is the item that was set aside. It is locked until it is removed, so that
    /// the recovery of another process does not take it for one that a kill left.
    MoveResult exchange(const TreeRecord& before) {
        const auto lock = tryLockItem(source(), original());
        const auto aside = lock ? hide(original(), asidePrefix) : tl::unexpected(lock.error());
        if (!aside) {
            dropCopy();
            return failed(from_.path, aside.error());
        }
        flushFolder(source());
        const auto now = TreeRecord::of(source(), aside->c_str());
        if (!now || !(*now == before)) return putBack(*aside, from_.path, now ? EBUSY : now.error());
        if (const int refusal = renameExclusively(target(), copy_.c_str(), target(), finalName()))
            return putBack(*aside, to_.path, refusal);
        return removeAside(*aside, before);
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
    /// removed before the new name is flushed, nor under a name that stands for a whole item.
    std::optional<MoveRemains> removeAside(const std::string& aside, const TreeRecord& known) {
        if (const int fault = flushFolder(target())) return remainsAt(aside, faultOf(fault));
        const auto arrived = hide(aside.c_str(), arrivedPrefix);
        if (!arrived && arrived.error() == ENOENT) return takenAway();
        if (!arrived) return remainsAt(aside, faultOf(arrived.error()));
        if (const int fault = flushFolder(source())) return remainsAt(*arrived, faultOf(fault));
        return removeArrived(*arrived, known);
    }

    /// What was written since it was copied is set aside again.
    std::optional<MoveRemains> removeArrived(const std::string& arrived, const TreeRecord& known) {
        const int fault = removeTree(source(), arrived.c_str(), &known);
        flushFolder(source());
        if (!isTaken(source(), arrived.c_str())) return fault == 0 ? std::nullopt : takenAway();
        if (fault != 0 && fault != ENOTEMPTY) return remainsAt(arrived, faultOf(fault));
        return remainsAt(hide(arrived.c_str(), asidePrefix).value_or(arrived), FileFault::busy);
    }

    /// Another process took what was aside before all of it was removed.
    std::optional<MoveRemains> takenAway() const {
        return MoveRemains{.place = from_.path, .fault = FileFault::busy};
    }

    /// Removes what earlier moves began to remove, if all of it is at the destination, too.
    std::optional<MoveRemains> settleArrived(const std::vector<LockedAside>& arrived) {
        std::optional<MoveRemains> remains;
        for (const auto& each : arrived) {
            const auto known = TreeRecord::of(source(), each.name.c_str());
            auto left = std::optional(remainsAt(each.name, known ? FileFault::busy : faultOf(known.error())));
            if (known && isWithin(each.name, finalName(), Compared::remains).value_or(false))
                left = removeArrived(each.name, *known);
            if (left) remains = std::move(left);
        }
        return remains;
    }

    /// The error is that the limit of the comparisons does not allow one.
    OsResult<bool> isWithin(const std::string& aside, const char* copy, Compared compared) const {
        const auto same = isSameTree(source(), aside.c_str(), target(), copy, compared, Reading::withinLimit);
        if (same || same.error() == ECANCELED) return same;
        return false;
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
        const auto isCopied = isWithin(aside, copy, compared);
        if (!isCopied) return failed(from_.path, isCopied.error());
        if (!*isCopied) return Completion{};
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
    const auto aside = lockAll(asidePrefix, from);
    if (!aside) return tl::unexpected(aside.error());
    // Another process may be about to set aside again what was written to one of these.
    if (const auto arrived = lockAll(arrivedPrefix, from); !arrived) return tl::unexpected(arrived.error());
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
    return namesTaken(asidePrefix, folder, name);
}

std::vector<std::string> namesOfSetAside(const std::string& name) {
    return hiddenNames(asidePrefix, name);
}

bool isNameOfArrived(std::string_view entry) {
    return entry.starts_with(arrivedPrefix);
}

std::vector<std::string> namesOfArrived(const std::string& name) {
    return hiddenNames(arrivedPrefix, name);
}

} // namespace tidwen
