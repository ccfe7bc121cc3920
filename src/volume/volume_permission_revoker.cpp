#include "volume/volume_permission_revoker.h"

#include "scan/permissions/permission_audit.h"
#include "volume/privacy_database_editor.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

tl::expected<void, PermissionRevokerError> VolumePermissionRevoker::revoke(const PermissionGrant& grant,
                                                                           const std::string& bundleID) {
    const auto database = PermissionAudit::databasePath(grant.scope, user_);
    if (const auto problem = deletePermissionRows(files_, database, bundleID, grant.service))
        return tl::unexpected(
            PermissionRevokerError{PermissionRevokerError::Kind::refused, problem->key, {}});
    return {};
}

} // namespace tidwen
