#pragma once

#include "base/log.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/unfinished_run.h"

#include <string>
#include <vector>

namespace tidwen {

/// The result of recovering interrupted removals.
struct RecoveryOutcome {
    std::vector<Manifest> recovered;       ///< the manifests that were written
    std::vector<UnfinishedRun> unfinished; ///< their journals stay for the next recovery and for an undo
    /// Old paths of missing items; the manifests of their runs record them.
    std::vector<std::string> missing = {};
    std::vector<Path> notBegun = {};       ///< quarantine folders not processed when it was stopped
    std::vector<Path> settledReturns = {}; ///< of interrupted undos
    /// Copies of interrupted undos that could not be settled, and what these left of items changed since.
    std::vector<Path> strayCopies = {};
    std::vector<Path> unlisted = {}; ///< unreadable folders, in which such copies are not found
};

/// Finds interrupted runs (a journal without a readable manifest), settles their interrupted moves and writes
/// each a manifest of what is actually in quarantine. While an item of a run is unsettled only its journal
/// records it, so no manifest is written. Also removes journals beside a manifest of which nothing is
/// unsettled, and quarantine folders that never held anything, and settles what interrupted undos left beside
/// old places, including those of completed runs. The caller holds the lock of the Trash. A step is one
/// quarantine folder; when stopped, it leaves the others for the next time.
RecoveryOutcome recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files, const Clock& clock,
                                           Log& log, const StepControl& control = {});

} // namespace tidwen
