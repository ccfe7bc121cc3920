#include "volume/volume_runner.h"

#include "base/message.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "scan/permissions/permission_audit.h"
#include "volume/privacy_database_editor.h"

#include <optional>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

/// Runs one operation; returns the reason for a failure.
class Carrier {
  public:
    Carrier(FileSystem& files, const UserEnvironment& user, const PathPolicy& policy, Log& log)
        : files_(files), user_(user), policy_(policy), log_(log) {}

    std::optional<Message> operator()(const operation::Move& move) const {
        return screenedMove(move, files_, policy_, log_);
    }
    /// Edits both databases even when one fails.
    std::optional<Message> operator()(const operation::ResetPermissions& reset) const {
        using Scope = PermissionGrant::Scope;
        std::optional<Message> failure;
        for (const auto scope : {Scope::user, Scope::system}) {
            auto reason =
                deletePermissionRows(files_, PermissionAudit::databasePath(scope, user_), reset.bundleID);
            if (reason && !failure) failure = std::move(reason);
        }
        return failure;
    }
    std::optional<Message> operator()(const operation::DeleteKeychainItem&) const {
        return Message{"failure.needsRunningMac"};
    }
    // Nothing runs on a volume and nothing is loaded, registered or cached, so these succeed without doing
    // anything.
    std::optional<Message> operator()(const operation::QuitApplication&) const { return std::nullopt; }
    std::optional<Message> operator()(const operation::Bootout&) const { return std::nullopt; }
    std::optional<Message> operator()(const operation::Bootstrap&) const { return std::nullopt; }
    std::optional<Message> operator()(const operation::UnregisterApp&) const { return std::nullopt; }
    std::optional<Message> operator()(const operation::FlushPreferences&) const { return std::nullopt; }

  private:
    FileSystem& files_;
    const UserEnvironment& user_;
    const PathPolicy& policy_;
    Log& log_;
};

} // namespace

VolumeRunner::VolumeRunner(FileSystem& files, UserEnvironment user, Log& log)
    : files_(files), user_(std::move(user)), policy_(user_, files), log_(log) {}

std::vector<OperationResult> VolumeRunner::run(const std::vector<RemovalOperation>& operations) {
    const Carrier carrier(files_, user_, policy_, log_);
    std::vector<OperationResult> results;
    for (const auto& operation : operations) {
        auto reason = std::visit(carrier, operation.kind);
        results.push_back(reason ? OperationResult::failure(operation.id, std::move(*reason))
                                 : OperationResult::success(operation.id));
    }
    return results;
}

} // namespace tidwen
