#pragma once

#include "base/log.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/process_runner.h"
#include "platform/user_environment.h"
#include "scan/policy/path_policy.h"

#include <chrono>
#include <vector>

namespace tidwen {

/// Runs operations one by one with the user's own rights on the running Mac.
class UserScopeRunner : public PrivilegedRunner {
  public:
    struct Ports {
        FileSystem& files;
        ProcessRunner& processes;
        Keychain& keychain;
        RunningApplications& applications;
        Log& log;
        /// How long a job may take to end before it is loaded anew; launchd itself grants it 20 seconds.
        std::chrono::milliseconds jobEndWait = std::chrono::seconds(25);
    };

    UserScopeRunner(Ports ports, UserEnvironment user);

    std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) override;

  private:
    Ports ports_;
    UserEnvironment user_;
    PathPolicy
        policy_; ///< created at the start: replacing the home meanwhile must not change what is protected
};

} // namespace tidwen
