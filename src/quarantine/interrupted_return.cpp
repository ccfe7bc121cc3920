#include "quarantine/interrupted_return.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "base/text.h"
#include "posix/comparison_limit.h"
#include "posix/copied_move.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/set_aside.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tidwen {

namespace {

/// Limits the names a forged record can make us try beside its items.
constexpr int mostNumbersTried = 200'000;

/// More than any application holds.
constexpr std::size_t mostCompared = 1'000'000;

constexpr std::size_t pieceBytes = 1u << 20;

/// Whether a file of `size` bytes is how another one begins.
bool isBeginningOf(const Path& whole, const Path& part, std::uint64_t size, const FileSystem& files) {
    for (std::uint64_t offset = 0; offset < size; offset += pieceBytes) {
        if (ComparisonLimit::isStopped()) return false;
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(pieceBytes, size - offset));
        const auto a = files.readRange(whole, offset, length), b = files.readRange(part, offset, length);
        if (!a || !b || *a != *b) return false;
    }
    return true;
}

bool beginsAlike(const Path& whole, const FileInfo& has, const Path& part, const FileInfo& grew,
                 const FileSystem& files) {
    if (has.size < grew.size) return false;
    if (const auto known = ComparisonLimit::known(has, grew)) return *known;
    if (!ComparisonLimit::allowsHolesOf(grew)) return false;
    const bool isAlike = isBeginningOf(whole, part, grew.size, files);
    ComparisonLimit::add(has, grew, isAlike);
    return isAlike;
}

bool isAbsence(FileFault fault) {
    return fault == FileFault::missing || fault == FileFault::notDirectory;
}

} // namespace

bool canHaveGrownFrom(const Path& original, const Path& copy, const FileSystem& files) {
    std::vector<std::pair<Path, Path>> left{{original, copy}};
    for (std::size_t compared = 0; !left.empty(); ++compared) {
        if (compared == mostCompared) return false;
        const auto [whole, part] = std::move(left.back());
        left.pop_back();
        const auto has = files.info(whole), grew = files.info(part);
        if (!has || !grew || has->kind != grew->kind) return false;
        if (ComparisonLimit::isStopped()) return false;
        if (has->kind == FileKind::regular && !beginsAlike(whole, *has, part, *grew, files)) return false;
        if (has->kind != FileKind::directory) continue;
        const auto entries = files.list(part);
        if (!entries) return false;
        left.reserve(left.size() + entries->size());
        for (const auto& entry : *entries)
            left.emplace_back(whole / entry.name, part / entry.name);
    }
    return true;
}

std::vector<InterruptedReturn> InterruptedReturns::of(const std::vector<ManifestEntry>& entries) {
    std::vector<InterruptedReturn> found;
    for (const auto& entry : entries) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const Path source(entry.source);
        const auto& copies = copiesIn(source.parent());
        if (!entry.requiresRoot && unlistable_.contains(source.parent())) unlisted_.insert(source.parent());
        for (int number = 1; number <= lastNumberTried && !copies.empty(); ++number) {
            if (number > 1 && ++numbersTried_ > mostNumbersTried) break;
            const Path to = numberedName(source, number);
            const auto name = growingCopyName(to.lastComponent());
            const auto alike = copies.find(fileNameKey(name));
            if (alike == copies.end()) continue;
            const bool isExact = alike->second.contains(name);
            const auto& copy = isExact ? name : *alike->second.begin();
            found.push_back({Path(*entry.destination),
                             isExact ? to : source.parent() / nameOnItsWay(copy).value_or(to.lastComponent()),
                             source.parent() / copy});
        }
    }
    return found;
}

/// Keyed by the resolved folder, so that links do not cause repeated listings.
const InterruptedReturns::Copies& InterruptedReturns::copiesIn(const Path& folder) {
    const auto [real, isNewName] = real_.try_emplace(folder, folder);
    if (isNewName) real->second = files_.resolve(folder).value_or(folder);
    const auto [copies, isNew] = copies_.try_emplace(real->second);
    if (!isNew) return copies->second;
    const auto entries = files_.list(real->second);
    if (!entries && !isAbsence(entries.error().fault)) unlistable_.insert(folder);
    for (const auto& entry : entries.value_or(std::vector<DirectoryEntry>()))
        if (entry.name.starts_with(growingCopyPrefix))
            copies->second[fileNameKey(entry.name)].insert(entry.name);
    return copies->second;
}

std::optional<Path> strayCopy(const Path& from, const Path& to, const FileSystem& files) {
    const Path copy = to.parent() / growingCopyName(to.lastComponent());
    if (!files.exists(copy)) return std::nullopt;
    const auto item = files.info(from), folder = files.infoFollowingLinks(to.parent());
    const bool isOnOneDisk = item && folder && item->device == folder->device; // nothing is copied
    if (isOnOneDisk || canHaveGrownFrom(from, copy, files)) return std::nullopt;
    return copy;
}

bool settle(const InterruptedReturn& found, FileSystem& files, const PathPolicy& policy) {
    if (!files.exists(found.copy)) return true;
    const auto judged = policy.checkMove(found.from, found.to, files);
    if (!judged) return false;
    if (!files.isSetAside(found.from) && !canHaveGrownFrom(found.from, found.copy, files)) return false;
    (void)files.settleInterruptedMove(judged->source(), judged->destination());
    return !files.exists(found.copy);
}

bool settleArrived(const ManifestEntry& move, FileSystem& files, const PathPolicy& policy) {
    if (move.kind != ManifestEntryKind::move || !move.destination) return false;
    const Path from(*move.destination), to(move.source);
    if (!files.exists(to)) return false;
    if (files.exists(from)) {
        if (!isOneItem(from, to, files)) return false;
    } else if (!files.isSetAside(from) || !InterruptedReturns(files).of({move}).empty()
               || !areSetAsideOf(to, from, files)) {
        return false;
    }
    (void)settleInterruptedMove(from, to, files, policy);
    return !files.exists(from) && !files.isSetAside(from);
}

bool settleTakenAgain(const ManifestEntry& move, HeldItems& held, FileSystem& files,
                      const PathPolicy& policy) {
    if (move.kind != ManifestEntryKind::move || !move.destination) return false;
    const Path from(*move.destination), oldPlace(move.source);
    if (files.exists(from) || !files.isSetAside(from)) return false;
    // With its copy there it has not arrived.
    if (!InterruptedReturns(files).of({move}).empty()) return false;
    const auto back = policy.checkMove(from, oldPlace, files);
    if (!back) return false;
    for (const auto& whole : held.wholeIn(move.source)) {
        const auto taken = policy.checkMove(oldPlace, whole, files);
        if (taken) (void)files.settleInterruptedMove(back->source(), taken->destination());
        if (!files.isSetAside(from)) return !files.exists(from);
    }
    return false;
}

} // namespace tidwen
