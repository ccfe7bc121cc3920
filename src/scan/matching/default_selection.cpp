#include "scan/matching/default_selection.h"

#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <variant>

namespace tidwen {

bool isUndoubted(const Trace& trace) {
    return !trace.contestedBy && !trace.isOnlyListed && !trace.mayHoldOthers && !trace.ownerUnsure;
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

bool resetsNothing(const Trace& trace, const ScanResult& result) {
    return std::holds_alternative<action::ResetPermissions>(trace.action)
           && std::ranges::all_of(result.permissions.grants, &PermissionGrant::isPathClient)
           && result.permissions.unreadable.empty();
}

} // namespace tidwen
