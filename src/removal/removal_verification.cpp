#include "removal/removal_verification.h"

namespace tidwen {

VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit) {
    VerificationReport report;
    for (const auto& each : targets) {
        auto audited = audit.audit(each.target);
        report.isIncomplete = report.isIncomplete || !audited.unreadable.empty();
        report.apps.push_back({.bundleID = each.target.bundleID,
                               .name = each.target.name,
                               .tccSurvivors = std::move(audited.grants)});
    }
    return report;
}

} // namespace tidwen
