#include "removal/chosen_items.h"

#include "operations/removal_operation.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>

namespace tidwen {

bool isEligible(const Trace& trace, RemovalMode mode) {
    return trace.reversibility != Reversibility::manualOnly && !staysInMode(trace, mode);
}

bool takesTheApplication(const RemovalTarget& target) {
    return std::ranges::any_of(
        target.traces, [](const Trace& trace) { return trace.category == TraceCategory::application; });
}

} // namespace tidwen
