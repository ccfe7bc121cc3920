#pragma once

#include "operations/removal_operation.h"
#include "removal/removal_plan.h"
#include "removal/stay_reason.h"
#include "scan/applications/app_target.h"
#include "scan/matching/trace.h"

#include <vector>

namespace tidwen {

/// Whether a removal in this mode can move the trace: not if only the user can remove it, and in a reset
/// neither the application nor its receipts.
bool isEligible(const Trace& trace, RemovalMode mode);

/// Whether the selection includes the application itself, not only its data.
bool takesTheApplication(const RemovalTarget& target);

/// What stays of one application or group of leftovers.
struct Remainder {
    /// How to remove it after the run.
    enum class Reach {
        search,   ///< a later search finds it
        claimant, ///< its application is gone; it is listed with the remaining application that claims it
        undo,     ///< nothing will find it again: undo the run, then remove the application together with it
    };
    AppTarget target;
    std::vector<StayingTrace> traces;
    Reach reach = Reach::search;
    bool receiptsStandAlone = false; ///< as in `OrphanGroup`
};

} // namespace tidwen
