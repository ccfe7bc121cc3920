#pragma once

#include "removal/removal_plan.h"
#include "removal/stay_reason.h"

#include <vector>

namespace tidwen {

/// Whether a removal in this mode can take the trace: not what only the user can deal with, and in a reset
/// neither the application nor its receipts.
bool isEligible(const Trace& trace, RemovalMode mode);

/// The application itself is among what is chosen of it, not its data alone.
bool takesTheApplication(const RemovalTarget& target);

/// What stays of one application or group of leftovers.
struct Remainder {
    AppTarget target;
    std::vector<StayingTrace> traces;
    /// After a run: no later search finds these, as their application is gone. They can be taken when the run
    /// is undone and the application removed together with them.
    bool needsUndo = false;
};

} // namespace tidwen
