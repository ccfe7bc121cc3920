#include "removal/removal_verification.h"

namespace tidwen {

VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit) {
    VerificationReport report;
    for (const auto& each : targets)
        report.apps.push_back({.bundleID = each.target.bundleID,
                               .name = each.target.name,
                               .tccSurvivors = audit.audit(each.target).grants});
    return report;
}

} // namespace tidwen
