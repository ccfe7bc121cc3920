#pragma once

#include "removal/removal_plan.h"
#include "removal/removal_report.h"

#include <vector>

namespace tidwen {

/// Reads the privacy grants of each application again; what is still there survived. Names the databases
/// that cannot be read, and fails by none.
VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit);

} // namespace tidwen
