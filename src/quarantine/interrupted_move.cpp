#include "quarantine/interrupted_move.h"

#include "base/path.h"
#include "operations/trash_staging.h"
#include "platform/file_absence.h"
#include "posix/comparison_limit.h"
#include "posix/copied_move.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/set_aside.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace tidwen {

namespace {

/// Unknown items in the quarantine folders of a run: a copy whose original is set aside on a disconnected
/// disk, or an item under another name.
class Unaccounted {
  public:
    Unaccounted(const std::vector<ManifestEntry>& planned, const FileSystem& files) : files_(files) {
        for (const auto& entry : planned) {
            if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
            const Path destination(*entry.destination);
            oldPlaceOfCopy_.emplace(destination.parent() / growingCopyName(destination.lastComponent()),
                                    entry.source);
            for (Path place = destination; accounted_.insert(place).second && !place.isRoot();)
                place = place.parent();
        }
    }

    /// True also if the folder cannot be read.
    bool liesIn(const Path& folder) {
        const auto [known, isNew] = known_.try_emplace(folder, false);
        if (isNew) known->second = look(folder);
        return known->second;
    }

    /// Among the folders looked at so far: whether the run ended while it copied an item, and so before it
    /// moved this one, which has no folder yet.
    bool isNeverMoved(const ManifestEntry& move) const {
        return hasBegunCopy_ && isMissing(files_, Path(*move.destination).parent());
    }

  private:
    bool look(const Path& folder) {
        const auto entries = files_.list(folder);
        if (!entries) return entries.error().fault != FileFault::missing;
        return std::ranges::any_of(*entries, [&](const DirectoryEntry& entry) {
            // The Finder creates .DS_Store; the run documents are known.
            return entry.name != ".DS_Store" && !isRunDocument(entry.name) && !isNameOfArrived(entry.name)
                   && !accounted_.contains(folder / entry.name) && !isBegun(folder / entry.name);
        });
    }

    /// Whether this is a copy that the run began, of an original that it cannot have moved: on the other disk
    /// nothing is set aside.
    bool isBegun(const Path& copy) {
        const auto found = oldPlaceOfCopy_.find(copy);
        if (found == oldPlaceOfCopy_.end()) return false;
        const Path oldPlace(found->second);
        const auto mine = files_.info(copy), there = files_.infoFollowingLinks(oldPlace.parent());
        // If both are on one disk, the other one is disconnected.
        if (!mine || !there || mine->device == there->device || files_.isSetAside(oldPlace)) return false;
        hasBegunCopy_ = true;
        return true;
    }

    const FileSystem& files_;
    std::map<Path, std::string> oldPlaceOfCopy_;
    bool hasBegunCopy_ = false;
    std::set<Path> accounted_; ///< the items and the folders above them
    std::map<Path, bool> known_;
};

enum class Whereabouts { inQuarantine, elsewhere, unknown };

Whereabouts placeOf(const Path& destination, const FileSystem& files) {
    const auto item = files.info(destination);
    if (item) return Whereabouts::inQuarantine;
    return item.error().fault == FileFault::missing ? Whereabouts::elsewhere : Whereabouts::unknown;
}

bool isSettled(const ManifestEntry& entry, Whereabouts place, Unaccounted& unaccounted,
               const FileSystem& files) {
    const Path source(entry.source), destination(*entry.destination);
    if (place == Whereabouts::unknown || files.isSetAside(source)) return false;
    if (place == Whereabouts::inQuarantine) return !isOneItem(source, destination, files);
    return !isStaged(destination, files) && !unaccounted.liesIn(destination.parent());
}

/// Whether the item was moved as part of an enclosing folder.
bool laysWithin(const std::set<Path>& moved, const Path& item) {
    for (Path folder = item.parent(); !folder.isRoot() && folder.isAbsolute(); folder = folder.parent())
        if (moved.contains(folder)) return true;
    return false;
}

/// The remains of a move that arrived. What cannot be settled now stays and is found the next time.
std::optional<MoveRemains> settled(const Path& from, const Path& to, FileSystem& files,
                                   const PathPolicy& policy) {
    const auto judged = policy.checkMove(from, to, files);
    if (!judged) return std::nullopt;
    return files.settleInterruptedMove(judged->source(), judged->destination()).value_or(std::nullopt);
}

} // namespace

bool isOneItem(const Path& a, const Path& b, const FileSystem& files) {
    const auto first = files.info(a), second = files.info(b);
    return first && second && first->device == second->device && first->inode == second->inode;
}

std::optional<MoveRemains> settleInterruptedMove(const Path& from, const Path& to, FileSystem& files,
                                                 const PathPolicy& policy) {
    return settled(from, to, files, policy);
}

void settleInterruptedMoves(const std::vector<ManifestEntry>& planned, StrayWrites strayWrites,
                            FileSystem& files, const PathPolicy& policy, HeldItems& held) {
    // Of a run that has ended nothing is aside but what it has whole; less than that is another item.
    const auto canHaveLeft = [&](const ManifestEntry& entry, const Path& whole) {
        const Path from(entry.source);
        if (!cameAfterSetAside(whole, from, files)) return false;
        // An equal item of a run that ended can be a later one, of which nothing is aside.
        if (held.mayBeAnotherHomes(from))
            return held.isUnfinished(entry.source, whole) && isCopiedFromBeside(whole, from, files)
                   && areSetAsideOf(whole, from, files);
        return held.isUnfinished(entry.source, whole) || areSetAsideOf(whole, from, files);
    };
    const auto settleInto = [&](const ManifestEntry& entry, const Path& to) {
        const Path from(entry.source);
        const bool isAnothers = files.isSetAside(from) && files.exists(to) && !canHaveLeft(entry, to);
        // Its own run, of another home, recovers it. What has more was written meanwhile and gets a name.
        if (isAnothers && to == Path(*entry.destination) && hasAllSetAside(to, from, files)) return;
        const auto remains = isAnothers ? std::nullopt : settled(from, to, files, policy);
        const bool isStray = isAnothers || (remains && remains->fault == FileFault::busy);
        if (!isStray || strayWrites == StrayWrites::stayAside || ComparisonLimit::isStopped()) return;
        if (const auto judged = policy.checkMove(from, to, files))
            (void)files.revealRemains(judged->source());
    };
    std::set<Path> compared, irremovable;
    for (const auto& entry : planned) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const Path from(entry.source), own(*entry.destination);
        if (files.isSetAside(from) && compared.insert(from).second) {
            const auto compareWith = [&](const Path& place) {
                const auto remains = settled(from, place, files, policy);
                if (remains && remains->fault != FileFault::busy) irremovable.insert(from);
            };
            for (const auto& place : held.copiedIn(entry.source))
                if (isCompleteCopy(copyOf(place), from, files)
                    && (!files.exists(place) || canHaveLeft(entry, place)))
                    compareWith(place);
            for (const auto& whole : held.wholeIn(entry.source))
                if (files.isSetAside(from) && canHaveLeft(entry, whole)) compareWith(whole);
        }
        if (irremovable.contains(from)) continue;
        const auto holder = files.isSetAside(from) ? held.holder(entry.source) : std::nullopt;
        if (holder && *holder != own) settleInto(entry, *holder);
        if (!holder || *holder == own || !files.isSetAside(from)) settleInto(entry, own);
    }
}

RunObservation observe(const std::vector<ManifestEntry>& planned, const FileSystem& files) {
    RunObservation seen;
    Unaccounted unaccounted(planned, files);
    std::vector<bool> observed;
    std::set<Path> moved;
    std::vector<ManifestEntry> gone;
    for (const auto& entry : planned) {
        const bool isMove = entry.kind == ManifestEntryKind::move && entry.destination;
        const auto place = isMove ? placeOf(Path(*entry.destination), files) : Whereabouts::elsewhere;
        observed.push_back(place == Whereabouts::inQuarantine);
        if (observed.back()) moved.emplace(entry.source);
        if (!isMove) continue;
        if (!isSettled(entry, place, unaccounted, files))
            seen.unsettled.push_back(entry);
        else if (place == Whereabouts::elsewhere && isMissing(files, Path(entry.source)))
            gone.push_back(entry);
    }
    for (auto& entry : gone)
        if (!laysWithin(moved, Path(entry.source)) && !unaccounted.isNeverMoved(entry)) {
            entry.isMissing = true;
            seen.missing.push_back(std::move(entry));
        }
    std::set<std::string> missing;
    for (const auto& entry : seen.missing)
        missing.insert(entry.source);
    for (std::size_t i = 0; i < planned.size(); ++i) {
        const auto& entry = planned[i];
        const bool isJob = entry.kind == ManifestEntryKind::bootout && entry.plistPath;
        if (observed[i] || (isJob && moved.contains(Path(*entry.plistPath)))) {
            seen.entries.push_back(entry);
        } else if (isJob && missing.contains(*entry.plistPath)) {
            seen.missing.push_back(entry);
            seen.missing.back().isMissing = true;
        }
    }
    return seen;
}

} // namespace tidwen
