#include "quarantine/arrived_rests.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "posix/comparison_limit.h"
#include "posix/copied_move.h"
#include "quarantine/interrupted_move.h"

#include <algorithm>
#include <set>

namespace tidwen {

namespace {

/// More than any application holds.
constexpr std::size_t mostNames = 1'000'000;

bool holdsAny(const Path& folder, const FileSystem& files) {
    const auto entries = files.list(folder).value_or(std::vector<DirectoryEntry>());
    return std::ranges::any_of(entries, isNameOfArrived, &DirectoryEntry::name);
}

template<class PlaceOf>
std::multimap<std::string, Path> restsOf(const std::vector<ManifestEntry>& entries, const PlaceOf& placeOf,
                                         const FileSystem& files) {
    std::multimap<std::string, Path> rests;
    std::map<Path, bool> hasAny;
    std::set<std::string> seen;
    for (const auto& entry : entries) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const Path place = placeOf(entry);
        if (!seen.insert(place.string()).second) continue;
        const auto [known, isNew] = hasAny.try_emplace(place.parent(), false);
        if (isNew) known->second = holdsAny(place.parent(), files);
        if (!known->second) continue;
        for (auto& rest : arrivedRests(place, files))
            rests.emplace(entry.source, std::move(rest));
    }
    return rests;
}

} // namespace

std::vector<Path> arrivedRests(const Path& item, const FileSystem& files) {
    std::vector<Path> rests;
    for (const auto& name : namesOfArrived(item.lastComponent()))
        if (files.exists(item.parent() / name)) rests.push_back(item.parent() / name);
    return rests;
}

std::multimap<std::string, Path> restsBesideOldPlaces(const std::vector<ManifestEntry>& entries,
                                                      const FileSystem& files) {
    return restsOf(
        entries, [](const ManifestEntry& entry) { return Path(entry.source); }, files);
}

std::multimap<std::string, Path> restsInQuarantine(const std::vector<ManifestEntry>& entries,
                                                   const FileSystem& files) {
    return restsOf(
        entries, [](const ManifestEntry& entry) { return Path(*entry.destination); }, files);
}

std::vector<Path> ArrivedRests::of(const Path& item) {
    const auto [known, isNew] = hasAny_.try_emplace(item.parent(), false);
    if (isNew) known->second = holdsAny(item.parent(), files_);
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
    if (files_.isSetAside(item)) return; // another undo was cut off, and is to be settled first
    for (int number = 1; number <= lastNumberTried; ++number) {
        const Path back = numberedName(oldPlace, number);
        if (number > 1 && !files_.exists(back)) break;
        if (mayTry(item, back)) (void)settleInterruptedMove(item, back, files_, policy_);
        if (arrivedRests(item, files_).empty()) return;
    }
    const auto back = policy_.checkMove(item, oldPlace, files_);
    if (!back) return;
    for (const auto& whole : held_.wholeIn(oldPlace.string()))
        if (const auto taken = policy_.checkMove(oldPlace, whole, files_); taken && mayTry(item, whole))
            (void)files_.settleInterruptedMove(back->source(), taken->destination());
}

void ArrivedRests::settleAtOldPlace(const Path& oldPlace, const Path& item) {
    if (files_.isSetAside(oldPlace)) return; // another removal was cut off, and is to be settled first
    if (mayTry(oldPlace, item)) (void)settleInterruptedMove(oldPlace, item, files_, policy_);
    for (const auto& whole : held_.wholeIn(oldPlace.string())) {
        if (arrivedRests(oldPlace, files_).empty()) return;
        if (mayTry(oldPlace, whole)) (void)settleInterruptedMove(oldPlace, whole, files_, policy_);
    }
}

bool ArrivedRests::spend(std::size_t names) {
    if (namesLeft_ == 0 || ComparisonLimit::isStopped()) return false;
    namesLeft_ -= std::min(namesLeft_, names);
    return true;
}

/// An attempt compares all rests of the item that are left beside `from`.
bool ArrivedRests::mayTry(const Path& from, const Path& item) {
    if (!spend(1) || !files_.exists(item)) return false;
    bool mayLie = false;
    std::vector<Weight*> weights;
    for (const auto& rest : arrivedRests(from, files_)) {
        weights.push_back(&weightOf(rest));
        if (weights.back()->isTooMuch) return false;
        mayLie = mayLie || mayLieIn(item, *weights.back());
    }
    if (!mayLie) return false;
    for (auto* weight : weights) {
        const bool isAgain = std::exchange(weight->wasTried, true);
        if (!spend(weight->names) || !ComparisonLimit::allowsFree(isAgain ? weight->bytes : weight->free))
            return false;
    }
    return true;
}

bool ArrivedRests::mayLieIn(const Path& item, const Weight& weight) {
    const auto missing = std::ranges::find_if_not(
        weight.top, [&](const std::string& name) { return files_.exists(item / name); });
    return spend(static_cast<std::size_t>(missing - weight.top.begin())) && missing == weight.top.end();
}

ArrivedRests::Weight& ArrivedRests::weightOf(const Path& rest) {
    const auto info = files_.info(rest).value_or(FileInfo());
    const auto [known, isNew] = weights_.try_emplace({info.device, info.inode});
    if (isNew) known->second = weigh(rest);
    return known->second;
}

ArrivedRests::Weight ArrivedRests::weigh(const Path& rest) const {
    Weight weight;
    std::set<std::pair<std::uint64_t, std::uint64_t>> files;
    std::vector<Path> left{rest};
    while (!left.empty()) {
        const Path item = std::move(left.back());
        left.pop_back();
        weight.isTooMuch = ++weight.names > mostNames || ComparisonLimit::isStopped();
        if (weight.isTooMuch) return weight;
        const auto info = files_.info(item);
        if (!info) continue;
        if (info->kind == FileKind::regular) {
            const bool isFurtherName = !files.emplace(info->device, info->inode).second;
            weight.bytes += info->size;
            weight.free += info->size - (isFurtherName ? 0 : std::min(info->size, info->allocatedBytes));
        }
        if (info->kind != FileKind::directory) continue;
        const auto entries = files_.list(item).value_or(std::vector<DirectoryEntry>());
        left.reserve(left.size() + entries.size());
        for (const auto& entry : entries) {
            if (item == rest) weight.top.push_back(entry.name);
            left.push_back(item / entry.name);
        }
    }
    return weight;
}

} // namespace tidwen
