#include "quarantine/earlier_undo.h"

#include "base/numbered_name.h"
#include "platform/file_absence.h"
#include "quarantine/interrupted_move.h"

namespace tidwen {

namespace {

/// An interrupted undo leaves at most a few items to settle. A manifest that implies many more is forged and
/// must not hold the lock for hours.
constexpr int mostAttempts = 5'000;

} // namespace

bool EarlierUndo::finishMove(const Path& from, const Path& oldPlace) {
    for (int number = 1; number <= lastNumberTried && attempts_ < mostAttempts; ++number) {
        ++attempts_;
        const Path target = numberedName(oldPlace, number);
        const bool wasThere = files_.exists(target);
        const auto remains = settleInterruptedMove(from, target, files_, policy_);
        if (!isMissing(files_, from)) return false;
        // What is aside may be the remains of the item at the target, which had arrived.
        const bool isItsOwn = !files_.isSetAside(from) || (remains && remains->fault != FileFault::busy);
        if (!wasThere || isItsOwn) return files_.exists(target);
    }
    return false;
}

std::optional<Path> EarlierUndo::finishLink(const Path& from, const Path& oldPlace) {
    for (int number = 1; number <= lastNumberTried && attempts_ < mostAttempts; ++number) {
        const Path target = numberedName(oldPlace, number);
        if (!files_.exists(target)) return std::nullopt;
        ++attempts_;
        if (!isOneItem(from, target, files_)) continue;
        settleInterruptedMove(from, target, files_, policy_);
        return isMissing(files_, from) ? std::optional(target) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace tidwen
