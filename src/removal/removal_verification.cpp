#include "removal/removal_verification.h"

#include "removal/chosen_items.h"

#include <algorithm>

namespace tidwen {

namespace {

/// Who stays and keeps its permissions is not to be told of them. Leftovers have no application that stays.
bool losesItsPermissions(const RemovalTarget& target) {
    return target.target.bundleURL.isRoot() || takesTheApplication(target)
           || std::ranges::any_of(target.traces, [](const Trace& trace) {
                  return std::holds_alternative<action::ResetPermissions>(trace.action);
              });
}

} // namespace

VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit) {
    VerificationReport report;
    for (const auto& each : targets) {
        if (!losesItsPermissions(each)) continue;
        auto found = audit.audit(each.target);
        report.apps.push_back({.bundleID = each.target.bundleID,
                               .name = each.target.name,
                               .tccSurvivors = std::move(found.grants),
                               .unreadable = std::move(found.unreadable)});
    }
    return report;
}

} // namespace tidwen
