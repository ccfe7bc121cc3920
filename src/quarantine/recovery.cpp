#include "quarantine/recovery.h"

#include "quarantine/interrupted_move.h"
#include "quarantine/quarantine_layout.h"

#include <optional>
#include <set>

namespace tidwen {

namespace {

/// What of the plan can be undone: moves whose item lies in quarantine, and unloaded jobs whose property list
/// is among them.
std::vector<ManifestEntry> observedEntries(const std::vector<ManifestEntry>& planned,
                                           const FileSystem& files) {
    const auto liesInQuarantine = [&](const ManifestEntry& entry) {
        return entry.kind == ManifestEntryKind::move && entry.destination
               && files.exists(Path(*entry.destination));
    };
    std::vector<bool> observed;
    std::set<std::string> movedPaths;
    for (const auto& entry : planned) {
        observed.push_back(liesInQuarantine(entry));
        if (observed.back()) movedPaths.insert(entry.source);
    }
    std::vector<ManifestEntry> entries;
    for (std::size_t i = 0; i < planned.size(); ++i) {
        const auto& entry = planned[i];
        const bool unloadedForGood = entry.kind == ManifestEntryKind::bootout && entry.plistPath
                                     && movedPaths.contains(*entry.plistPath);
        if (observed[i] || unloadedForGood) entries.push_back(entry);
    }
    return entries;
}

bool wasInterrupted(const Path& root, const FileSystem& files) {
    return files.exists(root / journalFileName) && !files.exists(root / manifestFileName);
}

std::optional<Manifest> recover(const Path& root, const PathPolicy& policy, FileSystem& files,
                                const Clock& clock, Log& log) {
    const auto journal = readJournal(root, files);
    if (!journal) {
        log.warning("Unreadable removal journal at {}: {}", root.string(), journal.error().detail);
        return std::nullopt;
    }
    for (const auto& entry : journal->planned)
        if (entry.kind == ManifestEntryKind::move && entry.destination)
            settleInterruptedMove(Path(entry.source), Path(*entry.destination), files, policy);

    Manifest manifest{.createdAt = journal->createdAt,
                      .quarantineRoot = journal->quarantineRoot,
                      .apps = journal->apps,
                      .entries = observedEntries(journal->planned, files),
                      .recoveredAt = clock.now()};
    if (const auto written = writeManifest(manifest, root / manifestFileName, files); !written) {
        log.error("Could not write recovered manifest: {} ({})", root.string(),
                  failureKey(written.error().fault));
        return std::nullopt;
    }
    log.info("Recovered interrupted removal: {}/{} planned entries observed in quarantine",
             manifest.entries.size(), journal->planned.size());
    // A journal beside a manifest is not read again, so a failure here costs nothing.
    (void)files.removeFile(root / journalFileName);
    return manifest;
}

} // namespace

std::vector<Manifest> recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files,
                                                 const Clock& clock, Log& log) {
    std::vector<Manifest> recovered;
    const PathPolicy policy(user);
    const auto folders = listQuarantineFolders(user, files);
    if (!folders) {
        log.warning("Unreadable location {}", user.trash().string());
        return recovered;
    }
    for (const auto& root : *folders)
        if (wasInterrupted(root, files))
            if (auto manifest = recover(root, policy, files, clock, log))
                recovered.push_back(std::move(*manifest));
    return recovered;
}

} // namespace tidwen
