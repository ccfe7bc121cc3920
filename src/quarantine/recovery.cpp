#include "quarantine/recovery.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "operations/trash_staging.h"
#include "platform/budgeted_files.h"
#include "platform/file_system.h"
#include "posix/comparison_limit.h"
#include "posix/copied_bytes.h"
#include "posix/copied_move.h"
#include "quarantine/arrived_rests.h"
#include "quarantine/earlier_undo.h"
#include "quarantine/held_items.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_documents.h"
#include "quarantine/unfinished_databases.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <tuple>

namespace tidwen {

namespace {

using Problem = UnfinishedRun::Problem;

/// One recovery of a Trash.
class Recovery {
  public:
    Recovery(const UserEnvironment& user, FileSystem& files, const Clock& clock, Log& log)
        : user_(user), policy_(user, files), files_(files), clock_(clock), log_(log), held_(user, files) {}

    void lookAt(const Path& root) {
        settleRun(root);
        tellCopies(root);
    }

    void leaveOut(const Path& root) { outcome_.notBegun.push_back(root); }

    /// A copy unsettled for one run may have been settled for another one that moved an item of the same
    /// path.
    RecoveryOutcome finish() {
        std::set<Path> strays = std::move(rests_);
        for (const auto& found : unsettledReturns_)
            if (files_.exists(found.copy)) strays.insert(found.copy);
        for (const auto& copy : strays)
            log_.warning("A copy that an undo began stays: {}", copy.string());
        outcome_.strayCopies.assign(strays.begin(), strays.end());
        outcome_.unlisted.assign(returns_.unlisted().begin(), returns_.unlisted().end());
        return std::move(outcome_);
    }

  private:
    void settleRun(const Path& root) {
        if (dropEmptyRun(root, files_)) return;
        if (!files_.exists(root / journalFileName)) {
            if (const auto ended = readManifest(root, budgeted_)) {
                settleStaged(root, ended->entries);
                settleReturns(ended->entries);
            }
            return;
        }
        const auto journal = readJournal(root, files_);
        if (auto manifest = readManifest(root, files_))
            return journal ? dropJournal(*journal, std::move(*manifest)) : void();
        if (journal) return recover(*journal);
        log_.warning("Unreadable removal journal at {}: {}", root.string(), journal.error().detail);
        if (auto run = readRunWithoutManifest(root, files_)) outcome_.unfinished.push_back(std::move(*run));
    }

    /// Names the copies that stay in a run that has ended. Of any other one they may be completed yet.
    void tellCopies(const Path& root) {
        if (files_.exists(root / journalFileName)) return;
        for (const auto& each : budgeted_.list(root).value_or(std::vector<DirectoryEntry>()))
            if (each.kind == FileKind::directory) tellCopiesIn(root / each.name, true);
    }

    /// In the folder of a step, or of one of several applications, with the folders of its steps below it.
    void tellCopiesIn(const Path& folder, bool mayBeOfApplication) {
        const auto isStep = [](const DirectoryEntry& entry) {
            return entry.kind == FileKind::directory
                   && entry.name.find_first_not_of("0123456789") == std::string::npos;
        };
        for (const auto& entry : budgeted_.list(folder).value_or(std::vector<DirectoryEntry>()))
            if (entry.name.starts_with(growingCopyPrefix))
                rests_.insert(folder / entry.name);
            else if (mayBeOfApplication && isStep(entry))
                tellCopiesIn(folder / entry.name, false);
    }

    void recover(const RemovalJournal& journal) {
        const Path& root = journal.quarantineRoot;
        settle(journal);
        const auto heldByOthers = settleBegunCopies(journal);
        auto run = readRunWithoutManifest(root, files_);
        if (run && run->known) {
            auto& entries = run->known->entries;
            std::erase_if(entries, [&](const ManifestEntry& entry) {
                return entry.isMissing && heldByOthers.contains(entry.plistPath.value_or(entry.source));
            });
            dropHeldByLaterRuns(entries, root, journal.createdAt, held_);
        }
        if (!run || !run->known) { // changed meanwhile
            outcome_.unfinished.push_back({.root = root});
        } else if (run->problem == Problem::unsettled) {
            for (const auto& item : run->unsettled)
                log_.warning("Interrupted removal {} keeps its journal for {}", root.string(), item);
            outcome_.unfinished.push_back(std::move(*run));
        } else if (auto manifest = *run->known; write(manifest)) {
            for (const auto& entry : manifest.entries)
                tellIfLost(entry);
            log_.info("Recovered interrupted removal: {}/{} planned entries observed in quarantine",
                      std::ranges::count(manifest.entries, false, &ManifestEntry::isMissing),
                      journal.planned.size());
            outcome_.recovered.push_back(std::move(manifest));
        } else {
            outcome_.unfinished.push_back(std::move(*run));
        }
    }

    /// Removes the journal of a completed run, which stays when it could not be deleted. First adds to the
    /// manifest what only the journal records as in quarantine or missing.
    void dropJournal(const RemovalJournal& journal, Manifest manifest) {
        settle(journal);
        auto seen = observe(journal.planned, files_);
        if (!seen.unsettled.empty()) return;
        dropHeldByLaterRuns(seen.missing, manifest.quarantineRoot, manifest.createdAt, held_);
        std::set<StepKey> known;
        for (const auto& entry : manifest.entries)
            known.insert(keyOf(entry));
        const auto before = manifest.entries.size();
        for (auto* found : {&seen.entries, &seen.missing})
            for (auto& entry : *found) {
                if (known.contains(keyOf(entry))) continue;
                tellIfLost(entry);
                manifest.entries.push_back(std::move(entry));
            }
        if (manifest.entries.size() > before) return void(write(manifest));
        (void)files_.removeFile(journal.quarantineRoot / journalFileName);
        dropUnfinishedDocuments(journal.quarantineRoot, files_);
    }

    /// A job is not lost; it waits for its property list.
    void tellIfLost(const ManifestEntry& entry) {
        if (entry.isMissing && entry.kind == ManifestEntryKind::move)
            outcome_.missing.push_back(entry.source);
    }

    /// Removes unfinished copies of this run whose originals another removal moved, whatever the clock said
    /// when it began. Returns the old places of those originals. The other copies stay.
    std::set<std::string> settleBegunCopies(const RemovalJournal& journal) {
        std::set<std::string> held;
        std::set<Path> compared;
        for (const auto& entry : journal.planned) {
            if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
            const Path destination(*entry.destination);
            const Path copy = destination.parent() / growingCopyName(destination.lastComponent());
            if (!files_.exists(copy) || !compared.insert(copy).second) continue;
            const auto originals = held_.wholeIn(entry.source);
            const bool isElsewhere = std::ranges::any_of(originals, [&](const Path& original) {
                return !original.isWithin(journal.quarantineRoot) && canHaveGrownFrom(original, copy, files_);
            });
            if (isElsewhere && files_.removeTree(copy)) held.insert(entry.source);
        }
        return held;
    }

    using StepKey = std::tuple<ManifestEntryKind, std::string, std::optional<std::string>>;
    static StepKey keyOf(const ManifestEntry& entry) { return {entry.kind, entry.source, entry.destination}; }

    /// Moves on into the Trash what stopped beside it.
    void settleStaged(const Path& root, const std::vector<ManifestEntry>& entries) {
        if (!isStaged(root, files_)) return;
        TrashStaging staging(files_, policy_);
        for (const auto& entry : entries)
            if (entry.destination)
                if (const auto failed = staging.settle(Path(*entry.destination)))
                    log_.warning("Stays in the staging folder: {} ({})", entry.source, failed->key);
    }

    void settle(const RemovalJournal& journal) {
        settleStaged(journal.quarantineRoot, journal.planned);
        settleInterruptedMoves(journal.planned, StrayWrites::getAName, files_, policy_, held_);
        settleReturns(journal.planned);
    }

    void settleReturns(const std::vector<ManifestEntry>& entries) {
        for (auto& found : returns_.of(entries)) {
            if (!files_.exists(found.copy)) continue;
            if (tidwen::settle(found, files_, policy_))
                tellSettled(found.to);
            else
                unsettledReturns_.push_back(std::move(found));
        }
        arrived_.lookAgain();
        for (const auto& entry : entries) {
            if (settleArrived(entry, files_, policy_) || settleTakenAgain(entry, held_, files_, policy_))
                tellSettled(Path(entry.source));
            const auto rests = arrived_.settle(entry);
            // One that was not compared to its end is left to the next recovery.
            if (!ComparisonLimit::isStopped()) rests_.insert(rests.left.begin(), rests.left.end());
            for (const auto& rest : rests.removed) {
                if (rest.isWithin(user_.trash())) tellSettled(Path(entry.source));
            }
        }
        for (const auto& entry : entries)
            if (entry.kind == ManifestEntryKind::move && entry.destination)
                if (auto rest = earlier_.findRest(Path(*entry.destination), Path(entry.source)))
                    rests_.insert(std::move(*rest));
    }

    void tellSettled(const Path& place) {
        log_.info("Settled an undo that was cut off on the way to {}", place.string());
        outcome_.settledReturns.push_back(place);
    }

    bool write(Manifest& manifest) {
        manifest.recoveredAt = clock_.now();
        const Path& root = manifest.quarantineRoot;
        const auto written = finishRun(manifest, files_);
        if (written)
            dropUnfinishedDocuments(root, files_);
        else
            log_.error("Could not write recovered manifest: {} ({})", root.string(),
                       failureKey(written.error().fault));
        return written.has_value();
    }

    const UserEnvironment& user_;
    const PathPolicy policy_;
    FileSystem& files_;
    const BudgetedFiles budgeted_{files_}; ///< for ended runs, whose number is unlimited
    const Clock& clock_;
    Log& log_;
    HeldItems held_;
    ArrivedRests arrived_{files_, policy_, held_};
    InterruptedReturns returns_{files_};
    std::vector<InterruptedReturn> unsettledReturns_;
    EarlierUndo earlier_{files_, policy_};
    std::set<Path> rests_; ///< of items that arrived and have changed since
    RecoveryOutcome outcome_;
};

} // namespace

RecoveryOutcome recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files, const Clock& clock,
                                           Log& log, const StepControl& control) {
    const auto folders = listQuarantineFolders(user, files);
    if (!folders) {
        log.warning("Unreadable location {}", user.trash().string());
        return {};
    }
    dropUnfinishedDatabases(user, files);
    const ComparisonLimit limit(control.stop);
    Recovery recovery(user, files, clock, log);
    for (std::size_t i = 0; i < folders->size(); ++i) {
        const auto& root = (*folders)[i];
        if (control.isStopped()) {
            recovery.leaveOut(root);
            continue;
        }
        StepProgress progress{i + 1, folders->size(), "recover", root.string()};
        control.report(progress);
        const CopiedBytes copied([&](std::uint64_t bytes) {
            progress.copiedBytes = bytes;
            control.report(progress);
        });
        recovery.lookAt(root);
    }
    return recovery.finish();
}

} // namespace tidwen
