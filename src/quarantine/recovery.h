#pragma once

#include "base/log.h"
#include "base/step_progress.h"
#include "platform/user_environment.h"
#include "quarantine/unfinished_run.h"

#include <string>
#include <vector>

namespace tidwen {

/// What became of the removals that were cut off.
struct RecoveryOutcome {
    std::vector<Manifest> recovered;       ///< the manifests that were written
    std::vector<UnfinishedRun> unfinished; ///< their journals stay, for the next time and for an undo
    /// Old places of items that are nowhere any more; the manifests of their runs keep them.
    std::vector<std::string> missing = {};
    std::vector<Path> notBegun = {};       ///< quarantine folders before which it was told to stop
    std::vector<Path> settledReturns = {}; ///< on the way to which an undo was cut off
    std::vector<Path> strayCopies = {};    ///< that an undo began, and whose originals are not whole any more
};

/// Finds runs that were cut off (a journal and no manifest that can be read), settles half-made moves and
/// writes each a manifest of what really lies in quarantine. While something of a run is unsettled its
/// journal is all that knows of it: then no manifest is written. A journal that stayed beside a manifest goes
/// once nothing of it is unsettled, and so does a quarantine folder in which nothing ever lay. What an undo
/// that was cut off left beside old places is settled, of runs that ended too. The caller
/// holds the lock of the Trash. A step is one quarantine folder; told to stop, it leaves the others for the
/// next time.
RecoveryOutcome recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files, const Clock& clock,
                                           Log& log, const StepControl& control = {});

} // namespace tidwen
