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
    /// How it can be taken after a run.
    enum class Reach {
        search,   ///< a later search finds it
        claimant, ///< its application is gone, and it is listed with the one that stays and claims it
        undo,     ///< nobody knows of it any more: undo the run, then remove the application together with it
    };
    AppTarget target;
    std::vector<StayingTrace> traces;
    Reach reach = Reach::search;
};

} // namespace tidwen
