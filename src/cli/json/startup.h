#pragma once

#include "scan/permissions/permission_audit.h"
#include "system/permissions_model.h"
#include "system/startup_items_model.h"

#include <string>

/// Documents of startup items and permissions; for their format see json/output.h.
namespace tidwen::json {

/// The items in display order, each with its switch ("on", "off", "none", "systemSettings") in "switchState".
std::string document(const StartupItemsModel& model);
std::string document(const PermissionAudit::Result& audit);
/// The permissions of this program.
std::string document(const PermissionsModel& model);

} // namespace tidwen::json
