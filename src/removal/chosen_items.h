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
    AppTarget target;
    std::vector<StayingTrace> traces;
};

} // namespace tidwen
