#include "quarantine/earlier_undo.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "platform/file_absence.h"
#include "posix/copied_move.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/manifest.h"
#include "quarantine/set_aside.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

/// An interrupted undo leaves at most a few items to settle. A manifest that implies many more is forged and
/// must not hold the lock for hours.
constexpr int mostAttempts = 5'000;

/// The same for the names of what they hold.
constexpr std::size_t mostNamesRead = 1'000'000;

} // namespace

/// The copies that show that the item has not arrived.
std::vector<InterruptedReturn> EarlierUndo::begun(const Path& from, const Path& oldPlace) {
    const ManifestEntry move{.source = oldPlace.string(), .destination = from.string(), .bundleID = {}};
    auto found = returns_.of({move});
    std::erase_if(found, [&](const InterruptedReturn& each) { return !files_.exists(each.copy); });
    return found;
}

/// Whether the item that arrived has something that is gone from the same folder of what was left. With too
/// many names to read it may have.
bool EarlierUndo::lacksAnyOf(const Path& arrived, const Path& left) {
    std::vector<std::pair<Path, Path>> folders{{arrived, left}};
    while (!folders.empty()) {
        const auto [back, rest] = std::move(folders.back());
        folders.pop_back();
        const auto there = files_.list(back), here = files_.list(rest);
        if (!there || !here) continue; // a file, or in only one of them
        namesRead_ += there->size() + here->size();
        if (namesRead_ > mostNamesRead) return true;
        std::set<std::string> names;
        for (const auto& entry : *here) {
            names.insert(entry.name);
            if (entry.kind == FileKind::directory) folders.emplace_back(back / entry.name, rest / entry.name);
        }
        const auto isGone = [&](const DirectoryEntry& entry) { return !names.contains(entry.name); };
        if (std::ranges::any_of(*there, isGone)) return true;
    }
    return false;
}

std::optional<Path> EarlierUndo::restOf(const Path& arrived, const Path& from) {
    for (const auto& entry : files_.list(from.parent()).value_or(std::vector<DirectoryEntry>())) {
        const bool isAside = nameOnItsWay(entry.name) == from.lastComponent();
        if (isAside && lacksAnyOf(arrived, from.parent() / entry.name)) return from.parent() / entry.name;
    }
    return std::nullopt;
}

/// The number of the name beside a free old place at which an item equal to what is aside lies; 1 without
/// one.
int EarlierUndo::arrivedAs(const Path& from, const Path& oldPlace) {
    for (int number = 2; number <= lastNumberTried && attempts_ < mostAttempts; ++number) {
        ++attempts_;
        const Path target = numberedName(oldPlace, number);
        if (!files_.exists(target)) break;
        if (areSetAsideOf(target, from, files_)) return number;
    }
    return 1;
}

std::optional<Path> EarlierUndo::finishMove(const Path& from, const Path& oldPlace) {
    rest_.reset();
    for (const auto& each : begun(from, oldPlace)) {
        (void)settleInterruptedMove(from, each.to, files_, policy_);
        if (files_.exists(each.copy)) return std::nullopt;
        if (!isMissing(files_, from)) return std::nullopt; // back in quarantine
        if (!files_.isSetAside(from)) return files_.exists(each.to) ? std::optional(each.to) : std::nullopt;
    }
    // The one that arrived first: with nothing at the old place the item would be put back a second time.
    for (int number = files_.exists(oldPlace) ? 1 : arrivedAs(from, oldPlace);
         number <= lastNumberTried && attempts_ < mostAttempts; ++number) {
        ++attempts_;
        const Path target = numberedName(oldPlace, number);
        const bool wasThere = files_.exists(target);
        if (!wasThere && rest_) return std::nullopt; // settling would give it the item's name
        const bool isAnother = wasThere && !areSetAsideOf(target, from, files_);
        const auto remains = isAnother ? std::nullopt : settleInterruptedMove(from, target, files_, policy_);
        if (!isMissing(files_, from)) return std::nullopt;
        // What is aside may be the remains of the item at the target, which had arrived.
        const bool isItsOwn = !files_.isSetAside(from) || (remains && remains->fault != FileFault::busy);
        if (!wasThere || isItsOwn) return files_.exists(target) ? std::optional(target) : std::nullopt;
        if (!rest_) rest_ = restOf(target, from);
    }
    return std::nullopt;
}

std::optional<Path> EarlierUndo::findRest(const Path& from, const Path& oldPlace) {
    if (files_.exists(from) || !files_.isSetAside(from) || !begun(from, oldPlace).empty())
        return std::nullopt;
    return restOf(oldPlace, from);
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
