#include "scan/default_selection.h"

namespace tidwen {

bool takenByDefault(const Trace& trace) {
    if (trace.category == TraceCategory::application) return true;
    const bool losesNothing = trace.reversibility == Reversibility::reversible
                              || trace.reversibility == Reversibility::irreversibleHarmless;
    return trace.risk != TraceRisk::sensitive && losesNothing && !trace.contestedBy;
}

} // namespace tidwen
