#pragma once

#include "removal/removal_plan.h"
#include "removal/removal_report.h"
#include "scan/permissions/permission_audit.h"

#include <vector>

namespace tidwen {

/// Reads the privacy grants of each application again; remaining ones are survivors. Unreadable databases are
/// listed and are no error.
VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit);

} // namespace tidwen
