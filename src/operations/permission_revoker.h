#pragma once

#include "base/message.h"
#include "platform/process_runner.h"
#include "posix/posix_process_runner.h"
#include "scan/permissions/permission_audit.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a permission could not be revoked.
struct PermissionRevokerError {
    enum class Kind { failed, refused, authorizationCancelled, process };
    Kind kind = Kind::failed;
    std::string text;           ///< for `failed`: the tool's output; for `refused`: the key of the reason
    ProcessRunnerError process; ///< for `process`

    /// nullopt for a dismissed prompt, which is never reported.
    std::optional<Message> describe() const;
};

/// Revokes one privacy permission of one application. Blocks; not for the main thread.
class PermissionRevoker {
  public:
    virtual ~PermissionRevoker() = default;
    virtual tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant& grant,
                                                              const std::string& bundleID) = 0;
};

/// On the running Mac, through /usr/bin/tccutil; permissions in the system's database require an
/// administrator.
class ToolPermissionRevoker : public PermissionRevoker {
  public:
    explicit ToolPermissionRevoker(ProcessRunner& processes) : processes_(processes) {}
    tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant& grant,
                                                      const std::string& bundleID) override;

  private:
    ProcessRunner& processes_;
};

/// A service as named by tccutil: "Camera" for "kTCCServiceCamera".
std::string shortServiceName(const std::string& service);

} // namespace tidwen
