#pragma once

#include "removal/removal_plan.h"
#include "removal/removal_report.h"

#include <vector>

namespace tidwen {

/// Reads the privacy grants of each application again; what is still there survived. An unreadable database
/// makes the report incomplete.
VerificationReport verifyRemoval(const std::vector<RemovalTarget>& targets, const PermissionAudit& audit);

} // namespace tidwen
