#pragma once

#include "base/log.h"
#include "operations/privileged_runner.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/policy/path_policy.h"

namespace tidwen {

/// Carries out operations on a volume, user-level and root-level alike. Moves are moves, screened by the
/// safety policy. No job is loaded there, nothing is registered and no preference is cached, so unloading,
/// loading, unregistering and flushing succeed with nothing to do. A permission reset deletes the client's
/// rows from the volume's privacy databases. A keychain deletion fails: it needs the running Mac.
class VolumeRunner : public PrivilegedRunner {
  public:
    VolumeRunner(FileSystem& files, UserEnvironment user, Log& log);
    std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) override;

  private:
    FileSystem& files_;
    UserEnvironment user_;
    PathPolicy
        policy_; ///< made at the start: a home that is exchanged meanwhile must not move what it protects
    Log& log_;
};

} // namespace tidwen
