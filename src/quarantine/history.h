#pragma once

#include "platform/read_budget.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/unfinished_run.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tidwen {

/// A run that can be looked back at.
struct RemovalHistoryEntry {
    Path root;
    Manifest manifest;
    std::optional<std::int64_t> sizeBytes = {}; ///< absent when sizes were not asked for
    int pendingMoves = 0;                       ///< moves whose item still lies in quarantine
    int totalMoves = 0;
    /// Moves whose item lies neither in quarantine nor anything in its old place, from where no later run of
    /// the history took it again.
    int missingMoves = 0;
    bool isSizePartial = false; ///< there was more than is measured: `sizeBytes` is a lower bound
    int loadableJobs = 0;       ///< unloaded jobs whose property list lies in its place again

    /// Something is left to put back or to load again. Whether a job was loaded since cannot be told; loading
    /// it once more does no harm.
    bool canBeUndone() const { return pendingMoves > 0 || loadableJobs > 0; }

    /// What became of the items that the run moved.
    enum class Items {
        none,         ///< it moved nothing
        inQuarantine, ///< at least one of them
        putBack,
        missing, ///< at least one lies nowhere: somebody took it out of quarantine, or from its place since
    };
    Items items() const;

    friend bool operator==(const RemovalHistoryEntry&, const RemovalHistoryEntry&) = default;
};

/// Whether the run's date can be what it says. A clock that was wrong dates a run before Tidwen existed, or
/// in the future; how old such a run is nobody knows, and nothing is done to it because of its age.
bool hasTrustworthyDate(const Manifest& manifest, Timestamp now);

/// The run in the quarantine folder `root`, without its size; nothing when it has no readable manifest.
std::optional<RemovalHistoryEntry> readHistoryEntry(const Path& root, const FileSystem& files);

/// Everything in the quarantine folders, each of whose documents is read once.
struct PastRuns {
    /// Newest first, runs of one second by name: people refer to them by their number in this list.
    std::vector<RemovalHistoryEntry> entries;
    std::vector<UnfinishedRun>
        unfinished;                 ///< those without a readable manifest, by the names of their folders
    std::vector<Path> leftOut = {}; ///< for which the budget did not suffice
    std::optional<FileError> unreadable = {}; ///< why the Trash could not be read; then there is nothing else
};

/// Runs for which `budget` does not suffice are in neither list; it counts them, too.
PastRuns loadPastRuns(const UserEnvironment& user, const FileSystem& files, bool includeSizes,
                      const ReadBudget& budget = {});

/// The entries alone.
std::vector<RemovalHistoryEntry> loadHistory(const UserEnvironment& user, const FileSystem& files,
                                             bool includeSizes, const ReadBudget& budget = {});

} // namespace tidwen
