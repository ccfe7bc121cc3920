#pragma once

#include "base/log.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/policy/path_policy.h"

#include <vector>

namespace tidwen {

/// Runs user-level and root-level operations on a volume. Moves are real moves, checked by the safety policy.
/// On a volume no job is loaded, nothing is registered and no preference is cached, so unloading, loading,
/// unregistering and flushing succeed without doing anything. A permission reset deletes the client's rows
/// from the volume's privacy databases. A keychain deletion fails: it requires the running Mac.
class VolumeRunner : public PrivilegedRunner {
  public:
    VolumeRunner(FileSystem& files, UserEnvironment user, Log& log);
    std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) override;

  private:
    FileSystem& files_;
    UserEnvironment user_;
    PathPolicy
        policy_; ///< created at the start: replacing the home meanwhile must not change what is protected
    Log& log_;
};

} // namespace tidwen
