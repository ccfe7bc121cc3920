#include "quarantine/recovery.h"

#include "quarantine/interrupted_move.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_documents.h"

#include <optional>

namespace tidwen {

namespace {

using Problem = UnfinishedRun::Problem;

bool wasInterrupted(const Path& root, const FileSystem& files) {
    return files.exists(root / journalFileName) && !files.exists(root / manifestFileName);
}

/// The run as it stands when it cannot be finished, or its manifest.
tl::expected<Manifest, UnfinishedRun> recover(const Path& root, const PathPolicy& policy, FileSystem& files,
                                              const Clock& clock, Log& log) {
    const auto journal = readJournal(root, files);
    if (!journal) {
        log.warning("Unreadable removal journal at {}: {}", root.string(), journal.error().detail);
        return tl::unexpected(UnfinishedRun{.root = root, .problem = Problem::unreadableJournal});
    }
    settleInterruptedMoves(journal->planned, StrayWrites::getAName, files, policy);
    const auto run = readUnfinishedRun(root, files);
    if (!run || !run->known) return tl::unexpected(UnfinishedRun{.root = root}); // changed under our hands
    if (run->problem == Problem::unsettled) {
        for (const auto& item : run->unsettled)
            log.warning("Interrupted removal {} keeps its journal for {}", root.string(), item);
        return tl::unexpected(*run);
    }
    auto manifest = *run->known;
    manifest.recoveredAt = clock.now();
    if (const auto written = finishRun(manifest, files); !written) {
        log.error("Could not write recovered manifest: {} ({})", root.string(),
                  failureKey(written.error().fault));
        return tl::unexpected(*run);
    }
    log.info("Recovered interrupted removal: {}/{} planned entries observed in quarantine",
             manifest.entries.size(), journal->planned.size());
    return manifest;
}

} // namespace

RecoveryOutcome recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files, const Clock& clock,
                                           Log& log) {
    RecoveryOutcome outcome;
    const PathPolicy policy(user, files);
    const auto folders = listQuarantineFolders(user, files);
    if (!folders) {
        log.warning("Unreadable location {}", user.trash().string());
        return outcome;
    }
    for (const auto& root : *folders) {
        if (!wasInterrupted(root, files)) continue;
        if (auto manifest = recover(root, policy, files, clock, log))
            outcome.recovered.push_back(std::move(*manifest));
        else
            outcome.unfinished.push_back(std::move(manifest.error()));
    }
    return outcome;
}

} // namespace tidwen
