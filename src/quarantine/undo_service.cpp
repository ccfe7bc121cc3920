#include "quarantine/undo_service.h"

#include "base/path.h"
#include "platform/file_system.h"
#include "posix/comparison_limit.h"
#include "quarantine/arrived_rests.h"
#include "quarantine/held_items.h"
#include "quarantine/history.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/run_documents.h"
#include "quarantine/trash_lock.h"
#include "quarantine/undo_run.h"
#include "quarantine/unfinished_databases.h"
#include "quarantine/unfinished_run.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

/// Whether items of the run are at neither place and no later run holds them: an undo then names them.
bool hasLost(const RemovalHistoryEntry& entry, const UserEnvironment& user, const FileSystem& files) {
    if (entry.missingMoves == 0) return false;
    const auto runs = loadHistory(user, files, false);
    const auto found = std::ranges::find(runs, entry.root, &RemovalHistoryEntry::root);
    return found != runs.end() && found->missingMoves > 0;
}

bool hasRests(const Manifest& manifest, const FileSystem& files) {
    return !restsBesideOldPlaces(manifest.entries, files).empty()
           || !restsInQuarantine(manifest.entries, files).empty();
}

} // namespace

UndoReport UndoService::undo(const Manifest& manifest, const ItemChoice& items, const StepControl& control) {
    return undoItems(ports_, user_, manifest, items, control);
}

tl::expected<Manifest, Message> UndoService::whatIsLeft(const Path& root, Settling settling) const {
    const Message nothingLeft{"history.undo.nothingLeft %@", {root.lastComponent()}};
    if (const auto ended = readManifest(root, ports_.files); ended && settling == Settling::done) {
        HeldItems held(user_, ports_.files);
        const PathPolicy policy(user_, ports_.files);
        ArrivedRests arrived(ports_.files, policy, held);
        for (const auto& entry : ended->entries) {
            settleTakenAgain(entry, held, ports_.files, policy);
            (void)arrived.settle(entry);
        }
    }
    if (auto entry = readHistoryEntry(root, ports_.files)) {
        const bool isLeft = entry->canBeUndone(ports_.runsJobs)
                            || (settling == Settling::done && hasRests(entry->manifest, ports_.files))
                            || hasLost(*entry, user_, ports_.files);
        if (!isLeft) return tl::unexpected(nothingLeft);
        return std::move(entry->manifest);
    }
    if (const auto journal = readJournal(root, ports_.files)) {
        HeldItems held(user_, ports_.files);
        // The original takes its own place; what was written there meanwhile gets a name beside it.
        if (settling == Settling::done)
            settleInterruptedMoves(journal->planned, StrayWrites::stayAside, ports_.files,
                                   PathPolicy(user_, ports_.files), held);
        auto seen = observe(journal->planned, ports_.files);
        dropHeldByLaterRuns(seen.missing, root, journal->createdAt, held);
        Manifest known{.createdAt = journal->createdAt,
                       .quarantineRoot = root,
                       .apps = journal->apps,
                       .entries = std::move(seen.entries)};
        // Unsettled and missing items are reported as failures.
        for (auto* unfound : {&seen.unsettled, &seen.missing})
            for (auto& entry : *unfound)
                if (!entry.destination || !ports_.files.exists(Path(*entry.destination)))
                    known.entries.push_back(std::move(entry));
        if (known.entries.empty()) return tl::unexpected(nothingLeft);
        return known;
    }
    const auto unreadable = readUnfinishedRun(root, ports_.files);
    return tl::unexpected(unreadable ? unreadable->whyNoUndo() : nothingLeft);
}

tl::expected<UndoPlan, Message> UndoService::planRun(const Path& root, const ItemChoice& items) {
    return whatIsLeft(root, Settling::leftOut).map([&](const Manifest& manifest) {
        return planUndo(ports_, user_, manifest, items);
    });
}

tl::expected<UndoReport, Message> UndoService::undoRun(const Path& root, const ItemChoice& items,
                                                       const StepControl& control) {
    const auto lock = lockTrash(user_, ports_.files);
    if (!lock) return tl::unexpected(lock.error());
    dropUnfinishedDatabases(user_, ports_.files);
    const ComparisonLimit limit(control.stop); // also for what is settled before the first item
    return whatIsLeft(root, Settling::done).map([&](const Manifest& manifest) {
        dropBegunCopies(manifest);
        auto report = undo(manifest, items, control);
        if (!readManifest(root, ports_.files)) finishInterruptedRun(manifest);
        return report;
    });
}

void UndoService::dropBegunCopies(const Manifest& manifest) const {
    const PathPolicy policy(user_, ports_.files);
    for (const auto& found : InterruptedReturns(ports_.files).of(manifest.entries))
        if (ports_.files.exists(found.from)) (void)settle(found, ports_.files, policy);
}

void UndoService::finishInterruptedRun(Manifest known) const {
    const Path root = known.quarantineRoot;
    const auto journal = readJournal(root, ports_.files);
    if (!journal || !observe(journal->planned, ports_.files).unsettled.empty()) return;
    known.recoveredAt = ports_.clock.now();
    if (const auto written = finishRun(known, ports_.files); !written)
        ports_.log.error("Could not write recovered manifest: {} ({})", root.string(),
                         failureKey(written.error().fault));
}

} // namespace tidwen
