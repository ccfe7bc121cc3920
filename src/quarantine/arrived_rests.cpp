#include "quarantine/arrived_rests.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "posix/copied_move.h"
#include "quarantine/interrupted_move.h"

#include <algorithm>

namespace tidwen {

std::vector<Path> arrivedRests(const Path& item, const FileSystem& files) {
    std::vector<Path> rests;
    for (const auto& name : namesOfArrived(item.lastComponent()))
        if (files.exists(item.parent() / name)) rests.push_back(item.parent() / name);
    return rests;
}

std::vector<Path> ArrivedRests::of(const Path& item) {
    const auto [known, isNew] = hasAny_.try_emplace(item.parent(), false);
    if (isNew)
        for (const auto& entry : files_.list(item.parent()).value_or(std::vector<DirectoryEntry>()))
            known->second = known->second || isNameOfArrived(entry.name);
    return known->second ? arrivedRests(item, files_) : std::vector<Path>();
}

ArrivedRests::Outcome ArrivedRests::settle(const ManifestEntry& move) {
    Outcome outcome;
    if (move.kind != ManifestEntryKind::move || !move.destination) return outcome;
    const Path oldPlace(move.source), item(*move.destination);
    auto rests = of(item);
    if (!rests.empty()) settleInQuarantine(item, oldPlace);
    const auto beside = of(oldPlace);
    if (!beside.empty()) settleAtOldPlace(oldPlace, item);
    rests.insert(rests.end(), beside.begin(), beside.end());
    for (auto& rest : rests)
        (files_.exists(rest) ? outcome.left : outcome.removed).push_back(std::move(rest));
    return outcome;
}

/// An undo put the item back, possibly under a name beside its old one; it may have been removed again.
void ArrivedRests::settleInQuarantine(const Path& item, const Path& oldPlace) {
    for (int number = 1; number <= lastNumberTried; ++number) {
        const Path back = numberedName(oldPlace, number);
        if (number > 1 && !files_.exists(back)) break;
        (void)settleInterruptedMove(item, back, files_, policy_);
        if (arrivedRests(item, files_).empty()) return;
    }
    const auto back = policy_.checkMove(item, oldPlace, files_);
    if (!back) return;
    for (const auto& whole : held_.wholeIn(oldPlace.string()))
        if (const auto taken = policy_.checkMove(oldPlace, whole, files_))
            (void)files_.settleInterruptedMove(back->source(), taken->destination());
}

void ArrivedRests::settleAtOldPlace(const Path& oldPlace, const Path& item) {
    (void)settleInterruptedMove(oldPlace, item, files_, policy_);
    for (const auto& whole : held_.wholeIn(oldPlace.string())) {
        if (arrivedRests(oldPlace, files_).empty()) return;
        (void)settleInterruptedMove(oldPlace, whole, files_, policy_);
    }
}

} // namespace tidwen
