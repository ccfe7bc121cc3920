#pragma once

#include "base/message.h"
#include "platform/process_runner.h"
#include "scan/permissions/permission_audit.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a permission was not taken back.
struct PermissionRevokerError {
    enum class Kind { failed, refused, authorizationCancelled, process };
    Kind kind = Kind::failed;
    std::string text;           ///< of `failed`: what the tool said; of `refused`: the key of the reason
    ProcessRunnerError process; ///< of `process`

    /// Nothing for a dismissed prompt, which is silent everywhere.
    std::optional<Message> describe() const;
};

/// Takes one privacy permission of one application back. Blocks; call it off the main thread.
class PermissionRevoker {
  public:
    virtual ~PermissionRevoker() = default;
    virtual tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant& grant,
                                                              const std::string& bundleID) = 0;
};

/// On the running Mac, through /usr/bin/tccutil; a permission of the system's database needs an
/// administrator.
class ToolPermissionRevoker : public PermissionRevoker {
  public:
    explicit ToolPermissionRevoker(ProcessRunner& processes) : processes_(processes) {}
    tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant& grant,
                                                      const std::string& bundleID) override;

  private:
    ProcessRunner& processes_;
};

/// A service as tccutil names it: "Camera" for "kTCCServiceCamera".
std::string shortServiceName(const std::string& service);

} // namespace tidwen
