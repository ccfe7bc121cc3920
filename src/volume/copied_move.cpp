#include "volume/copied_move.h"

#include "base/numbered_name.h"
#include "volume/durable_write.h"
#include "volume/exclusive_rename.h"
#include "volume/file_faults.h"
#include "volume/item_description.h"
#include "volume/tree_comparison.h"
#include "volume/tree_copy.h"
#include "volume/tree_record.h"
#include "volume/tree_removal.h"

#include <fcntl.h>

namespace tidwen {

namespace {

/// The four names of one move. The two in between follow from the two ends, so that they are found again
/// after a crash.
class CopiedMove {
  public:
    CopiedMove(const MoveEnd& from, const MoveEnd& to) : from_(from), to_(to) {}

    FileResult<void> run() {
        if (auto settled = settle(); !settled) return settled;
        if (isTaken(target(), finalName())) return refused(to_.path, FileFault::exists);
        // Known beforehand, so as not to copy in vain.
        if (::faccessat(source(), ".", W_OK | X_OK, AT_EACCESS) != 0) return failed(from_.path, errno);
        if (::faccessat(target(), ".", W_OK | X_OK, AT_EACCESS) != 0) return failed(to_.path, errno);
        const auto before = TreeRecord::of(source(), original());
        if (!before) return failed(from_.path, before.error());
        if (auto copied = makeCopy(); !copied) {
            dropCopy();
            return copied;
        }
        return exchange(*before);
    }

    FileResult<void> settle() {
        if (isTaken(source(), aside_.c_str())) return settleCommitted();
        if (!isTaken(target(), copy_.c_str()) || isTaken(target(), finalName())) return {};
        // Without an original the copy is all there is, and no state that a crash of ours leaves.
        if (!isTaken(source(), original())) return refused(from_.path, FileFault::missing);
        dropCopy();
        return {};
    }

  private:
    int source() const { return from_.place.folder.get(); }
    int target() const { return to_.place.folder.get(); }
    const char* original() const { return from_.place.name.c_str(); }
    const char* finalName() const { return to_.place.name.c_str(); }

    void dropCopy() {
        if (isTaken(target(), copy_.c_str())) removeTree(target(), copy_.c_str());
        flushFolder(target());
    }

    FileResult<void> makeCopy() {
        if (const int fault = copyTree(source(), original(), target(), copy_.c_str())) {
            const bool isTargets = fault == ENOSPC || fault == EDQUOT || fault == ENOTSUP || fault == EROFS;
            return failed(isTargets ? to_.path : from_.path, fault);
        }
        if (const int fault = flushDisk(target())) return failed(to_.path, fault);
        const auto same = isSameTree(source(), original(), target(), copy_.c_str(), Compared::whole);
        if (!same) return failed(from_.path, same.error());
        if (!*same)
            return failed(from_.path, EBUSY); // somebody writes in it, or the disk does not keep it all
        return {};
    }

    /// From here on the original is the one that stands aside.
    FileResult<void> exchange(const TreeRecord& before) {
        if (const int fault = renameExclusively(source(), original(), source(), aside_.c_str())) {
            dropCopy();
            return failed(from_.path, fault);
        }
        flushFolder(source());
        const auto now = TreeRecord::of(source(), aside_.c_str());
        if (!now || !(*now == before)) return putBack(from_.path, now ? EBUSY : now.error());
        if (const int fault = renameExclusively(target(), copy_.c_str(), target(), finalName()))
            return putBack(to_.path, fault);
        flushFolder(target());
        removeAside(before);
        return {};
    }

    FileResult<void> putBack(const Path& culprit, int reason) {
        auto returned = returnAside();
        return returned ? failed(culprit, reason) : returned;
    }

    /// Its own name may have been taken meanwhile, by an application that made its folder anew: then it gets
    /// a visible name beside, because a hidden one would be found by nobody. The error tells that name.
    FileResult<void> returnAside() {
        const auto rename = [&](const std::string& name) {
            return renameExclusively(source(), aside_.c_str(), source(), name.c_str());
        };
        int fault = rename(original());
        Path place = from_.path;
        for (int number = 2; fault == EEXIST && number <= lastNumberTried; ++number) {
            place = numberedName(from_.path, number);
            fault = rename(place.lastComponent());
        }
        if (fault) return failed(from_.path, fault);
        flushFolder(source());
        dropCopy();
        if (place != from_.path) return refused(place, FileFault::exists);
        return {};
    }

    /// The item is complete at its destination: what cannot be removed any more does not undo the move, and
    /// what came to the original since it was copied stays beside it.
    void removeAside(const TreeRecord& known) {
        removeTree(source(), aside_.c_str(), &known);
        flushFolder(source());
    }

    FileResult<void> settleCommitted() {
        const auto known = TreeRecord::of(source(), aside_.c_str());
        if (!known) return failed(from_.path, known.error());
        const bool isPlaced = isTaken(target(), finalName());
        const bool isCopied = isTaken(target(), copy_.c_str());
        if (isPlaced && asideIs(finalName(), Compared::remains)) {
            removeAside(*known);
            return {};
        }
        if (!isPlaced && isCopied && asideIs(copy_.c_str(), Compared::whole)) {
            if (const int fault = renameExclusively(target(), copy_.c_str(), target(), finalName()))
                return failed(to_.path, fault);
            flushFolder(target());
            removeAside(*known);
            return {};
        }
        // No complete copy: the original goes back, unless it may have begun to be removed.
        if (isPlaced && !isCopied) return refused(to_.path, FileFault::exists);
        return returnAside();
    }

    bool asideIs(const char* copy, Compared compared) const {
        return isSameTree(source(), aside_.c_str(), target(), copy, compared).value_or(false);
    }

    const MoveEnd& from_;
    const MoveEnd& to_;
    const std::string copy_ = nameBeside(".tidwen-copy-", to_.place.name);
    const std::string aside_ = asideName(from_.place.name);
};

} // namespace

FileResult<void> moveByCopy(const MoveEnd& from, const MoveEnd& to) {
    return CopiedMove(from, to).run();
}

std::string asideName(const std::string& name) {
    return nameBeside(".tidwen-moved-", name);
}

FileResult<void> settleMoveByCopy(const MoveEnd& from, const MoveEnd& to) {
    const int source = from.place.folder.get(), target = to.place.folder.get();
    if (finishLinkedRename(source, from.place.name.c_str(), target, to.place.name.c_str())) {
        flushFolder(target);
        flushFolder(source);
        return {};
    }
    return CopiedMove(from, to).settle();
}

} // namespace tidwen
