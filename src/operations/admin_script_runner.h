#pragma once

#include "base/log.h"
#include "base/message.h"
#include "operations/administrator_prompt.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "operations/trash_staging.h"
#include "platform/file_system.h"
#include "platform/process_runner.h"
#include "platform/user_environment.h"
#include "scan/policy/path_policy.h"

#include <chrono>
#include <functional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Runs root operations as one shell batch with one authorization prompt.
///
/// Before anything runs, every operation is judged: moves by the safety policy, the other kinds by what may
/// be handed to a tool as root (see tool_arguments.h). What is refused never reaches the batch; a batch of
/// refused operations asks for no password. `UserEnvironment::userID` must be the logged-in user's real id:
/// it names the launchd domain of that session.
class AdminScriptRunner : public PrivilegedRunner {
  public:
    using Execute =
        std::function<tl::expected<ProcessResult, AdminScriptRunnerError>(const std::string& script)>;

    /// Runs the batch through /usr/bin/osascript. The timeout includes the time the user takes to answer the
    /// prompt. `processes` must outlive the function.
    static Execute throughOsascript(ProcessRunner& processes,
                                    std::chrono::milliseconds timeout = std::chrono::seconds(600));

    /// Whether root's shell may enter the user's Trash.
    enum class Trash { openToRoot, closedToRoot };

    AdminScriptRunner(Execute execute, FileSystem& files, UserEnvironment user, Log& log,
                      Trash trash = Trash::openToRoot);

    std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) override;
    bool asksPerRun() const override { return true; }

  private:
    /// The operation as root may run it, a move with both ends resolved; or the reason for a refusal.
    tl::expected<RemovalOperation, Message> judged(RemovalOperation operation) const;
    /// The operation as root runs it when the Trash is closed to root.
    tl::expected<RemovalOperation, Message> staged(RemovalOperation operation);
    /// Ends the user's part of a move; the reason when an item could not follow into the Trash.
    OperationResult followed(OperationResult result, const RemovalOperation& operation);
    /// An item at its destination counts as moved whatever the output says: the shell may have died, or the
    /// tool failed afterwards. Otherwise it would be missing in the manifest and never be put back.
    OperationResult settled(OperationResult result, const RemovalOperation& operation) const;
    /// Permissions never stop root, so where bundles alone were not moved, macOS guards them. Where other
    /// items failed as well, as when the Trash is closed to root, the status stays.
    void nameAppManagement(std::vector<OperationResult>& results,
                           const std::vector<RemovalOperation>& operations) const;
    std::vector<OperationResult> runAllowed(const std::vector<RemovalOperation>& operations) const;

    Execute execute_;
    FileSystem& files_;
    UserEnvironment user_;
    PathPolicy
        policy_; ///< created at the start: replacing the home meanwhile must not change what is protected
    Log& log_;
    Trash trash_;
    TrashStaging staging_{files_, policy_};
};

} // namespace tidwen
