#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"
#include "quarantine/unfinished_run.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tidwen {

/// One past run.
struct RemovalHistoryEntry {
    Path root;
    Manifest manifest;
    std::optional<std::int64_t> sizeBytes = {}; ///< absent unless sizes are requested
    int pendingMoves = 0;                       ///< moves whose item is still in quarantine
    ItemChoice pendingItems = {};               ///< the old paths of their items
    int totalMoves = 0;
    /// Moves whose item is neither in quarantine nor at its old path, and was not moved from there by a later
    /// run, also an interrupted one.
    int missingMoves = 0;
    ItemChoice missingItems = {}; ///< the old paths of their items
    ItemChoice takenAgain = {};   ///< old paths of items that a later run moved from there
    bool isSizePartial = false;   ///< measuring stopped at a limit; `sizeBytes` is a lower bound
    bool isPartlyPurged = false;  ///< a purge was cut off while it deleted one of the missing items
    int loadableJobs = 0;         ///< unloaded jobs whose property list is in its place again

    /// Something is left to put back or, on a Mac that `runsJobs`, to load. Whether a job was loaded since is
    /// unknown; loading it again is harmless.
    bool canBeUndone(bool runsJobs) const { return pendingMoves > 0 || (runsJobs && loadableJobs > 0); }

    /// Where the items are that the run moved.
    enum class Items {
        none,         ///< it moved nothing
        inQuarantine, ///< at least one of them
        putBack,
        missing, ///< at least one is at neither place: removed from quarantine, or put back and then removed
    };
    Items items() const;

    friend bool operator==(const RemovalHistoryEntry&, const RemovalHistoryEntry&) = default;
};

/// Whether the run's date is plausible. With a wrong clock a run is dated before Tidwen existed, or in the
/// future; its age is then unknown, and nothing is done to it because of its age.
bool hasTrustworthyDate(const Manifest& manifest, Timestamp now);

/// The run in the quarantine folder `root`, without its size; nullopt without a readable manifest.
std::optional<RemovalHistoryEntry> readHistoryEntry(const Path& root, const FileSystem& files);

/// All runs in the quarantine folders. Each document is read once.
struct PastRuns {
    /// Newest first, then by name within one second: users refer to runs by their number in this list.
    std::vector<RemovalHistoryEntry> entries;
    std::vector<UnfinishedRun> unfinished; ///< without a readable manifest, sorted by folder name
    std::vector<Path> leftOut = {};        ///< not read because the budget was exhausted
    std::optional<FileError> unreadable =
        {}; ///< why the Trash could not be read; everything else is empty then
};

/// Runs that exceed `budget` are in neither list. They count toward it.
PastRuns loadPastRuns(const UserEnvironment& user, const FileSystem& files, bool includeSizes,
                      const ReadBudget& budget = {});

/// `entries` only.
std::vector<RemovalHistoryEntry> loadHistory(const UserEnvironment& user, const FileSystem& files,
                                             bool includeSizes, const ReadBudget& budget = {});

} // namespace tidwen
