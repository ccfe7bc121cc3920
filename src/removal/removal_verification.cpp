#include "removal/removal_verification.h"

#include "scan/permissions/permission_audit.h"

namespace tidwen {

VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit) {
    VerificationReport report;
    for (const auto& each : targets) {
        auto found = audit.audit(each.target);
        report.apps.push_back({.bundleID = each.target.bundleID,
                               .name = each.target.name,
                               .tccSurvivors = std::move(found.grants),
                               .unreadable = std::move(found.unreadable)});
    }
    return report;
}

} // namespace tidwen
