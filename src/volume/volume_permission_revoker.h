#pragma once

#include "operations/permission_revoker.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/permissions/permission_audit.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Revokes a permission by deleting its rows from a volume's privacy database.
class VolumePermissionRevoker : public PermissionRevoker {
  public:
    VolumePermissionRevoker(FileSystem& files, const UserEnvironment& user) : files_(files), user_(user) {}
    tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant& grant,
                                                      const std::string& bundleID) override;

  private:
    FileSystem& files_;
    const UserEnvironment& user_;
};

} // namespace tidwen
