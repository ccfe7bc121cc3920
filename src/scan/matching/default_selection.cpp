#include "scan/matching/default_selection.h"

#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

namespace tidwen {

bool isUndoubted(const Trace& trace) {
    return !trace.contestedBy && !trace.isOnlyListed && !trace.mayHoldOthers;
}

bool takenByDefault(const Trace& trace) {
    if (trace.category == TraceCategory::application) return true;
    const bool losesNothing = trace.reversibility == Reversibility::reversible
                              || trace.reversibility == Reversibility::irreversibleHarmless;
    return trace.risk != TraceRisk::sensitive && losesNothing && isUndoubted(trace);
}

bool takenByDefault(const Trace& trace, const ScanResult& result) {
    return !result.immovable && !result.isProtected && takenByDefault(trace);
}

} // namespace tidwen
