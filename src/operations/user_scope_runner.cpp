#include "operations/user_scope_runner.h"

#include "base/message.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "operations/tool_arguments.h"
#include "operations/tool_launchd.h"
#include "operations/tool_paths.h"
#include "platform/property_list_file.h"
#include "platform/workspace.h"
#include "posix/posix_process_runner.h"
#include "scan/applications/bundle_names.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <tl/expected.hpp>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

using Failure = std::optional<Message>; ///< nullopt when the operation succeeded

constexpr std::chrono::seconds quitWait{10};
constexpr std::chrono::seconds toolTimeout{30};

/// launchctl's exit codes, besides 0, for what is already done.
constexpr int noSuchProcess = 3;
constexpr int noSuchService = 113;
constexpr int alreadyLoaded = 17;

/// What newer systems answer for a job that is loaded, and for much else.
constexpr int inputOutputError = 5;
constexpr int alreadyInProgress = 37;

/// A job that is slow to end; it does end.
constexpr int nowInProgress = 36;

constexpr std::chrono::milliseconds jobEndPoll{200};

constexpr int killallFoundNone = 1;

/// A locked keychain, which would have to ask for its password.
constexpr std::int32_t keychainInteractionNotAllowed = -25308;
constexpr std::int32_t keychainAuthorizationFailed = -25293;
/// No keychain, as for an account that never logged in at the screen.
constexpr std::int32_t keychainNotAvailable = -25291;
constexpr std::int32_t keychainNoSuchKeychain = -25294;
constexpr std::int32_t keychainNoDefault = -25307;

/// Runs one operation.
class Step {
  public:
    Step(const UserScopeRunner::Ports& ports, const UserEnvironment& user, const PathPolicy& policy)
        : ports_(ports), user_(user), policy_(policy) {}

    Failure operator()(const operation::QuitApplication& quit) const {
        if (!toolArguments::isIdentifier(quit.bundleID)) return blocked(quit.bundleID);
        if (ports_.applications.quit(quit.bundleID, quitWait)) return std::nullopt;
        return Message{"failure.appDidNotQuit"};
    }

    Failure operator()(const operation::ResetPermissions& reset) const {
        if (!toolArguments::isIdentifier(reset.bundleID)) return blocked(reset.bundleID);
        const auto status =
            run(toolPaths::tccutil, {"reset", "All", reset.bundleID}, "failure.tccutilUnavailable");
        if (!status) return status.error();
        return *status == 0 ? Failure() : Message{"failure.tccutilFailed"};
    }

    Failure operator()(const operation::Bootout& bootout) const {
        if (!toolArguments::isLabel(bootout.label)) return blocked(bootout.label);
        const auto target = domain(bootout.isSystemDomain) + "/" + bootout.label;
        const auto status = run(toolPaths::launchctl, {"bootout", target}, "failure.launchctlUnavailable");
        if (!status) return status.error();
        if (*status == 0 || *status == noSuchProcess || *status == noSuchService) return std::nullopt;
        if (*status == nowInProgress && hasStopped(bootout)) return std::nullopt;
        return launchctlFailure(*status);
    }

    Failure operator()(const operation::Bootstrap& bootstrap) const {
        const auto label = labelOf(bootstrap);
        const auto deadline = std::chrono::steady_clock::now() + ports_.jobEndWait;
        while (true) {
            const auto status = run(toolPaths::launchctl,
                                    {"bootstrap", domain(bootstrap.isSystemDomain), bootstrap.plist.string()},
                                    "failure.launchctlUnavailable");
            if (!status) return status.error();
            if (*status == 0 || *status == alreadyLoaded) return std::nullopt;
            if (label && isSwitchedOff(*label, bootstrap.isSystemDomain)) return std::nullopt;
            const bool mayBeLoaded = *status == inputOutputError || *status == alreadyInProgress;
            if (!label || !mayBeLoaded) return launchctlFailure(*status);
            const auto state = jobState(*label, bootstrap.isSystemDomain);
            if (state == JobState::loaded) return std::nullopt;
            const bool isLate = std::chrono::steady_clock::now() >= deadline;
            if (state != JobState::ending || isLate) return launchctlFailure(*status);
            std::this_thread::sleep_for(jobEndPoll);
        }
    }

    Failure operator()(const operation::Move& move) const {
        auto failure = screenedMove(move, ports_.files, policy_, ports_.log);
        // On the running Mac it is known who guards applications, and where he is told to let one through.
        if (failure && failure->key == guardedBySystemKey && isBundleName(move.source.lastComponent()))
            return Message{"failure.appManagement %@", {std::string(appManagementAddress)}};
        return failure;
    }

    Failure operator()(const operation::DeleteKeychainItem& item) const {
        // This runner has no rights to the system's keychain.
        if (item.isSystemKeychain || !toolArguments::isService(item.service)) return blocked(item.service);
        bool isAnyDeleted = false;
        for (const auto itemClass :
             {KeychainItemClass::genericPassword, KeychainItemClass::internetPassword}) {
            const auto status = ports_.keychain.deleteItems(itemClass, item.service);
            if (status != 0 && status != keychainItemNotFound) return keychainFailure(status);
            isAnyDeleted = isAnyDeleted || status == 0;
        }
        return isAnyDeleted ? Failure() : keychainFailure(keychainItemNotFound);
    }

    Failure operator()(const operation::UnregisterApp& app) const {
        return exitFailure(
            run(toolPaths::lsregister, {"-u", app.bundleURL.string()}, "failure.toolUnavailable"), 0);
    }

    Failure operator()(const operation::FlushPreferences&) const {
        return exitFailure(run(toolPaths::killall, {"cfprefsd"}, "failure.toolUnavailable"),
                           killallFoundNone);
    }

  private:
    using Status = tl::expected<int, Message>;

    Status run(const char* tool, const std::vector<std::string>& arguments,
               const char* unavailableKey) const {
        const auto result = ports_.processes.run(tool, arguments, toolTimeout);
        if (result) return result->exitCode;
        if (result.error().kind == ProcessRunnerError::Kind::timedOut)
            return tl::unexpected(describe(result.error()));
        ports_.log.warning("{} could not be started: {}", tool, result.error().text);
        return tl::unexpected(Message{unavailableKey});
    }

    std::optional<std::string> labelOf(const operation::Bootstrap& bootstrap) const {
        const auto job = readPropertyList(ports_.files, bootstrap.plist);
        const auto* label = job ? job->findString("Label") : nullptr;
        return label ? std::optional(*label) : std::nullopt;
    }

    /// A disabled job is not loaded, and that is the state to restore.
    bool isSwitchedOff(const std::string& label, bool isSystemDomain) const {
        const auto overrides = ToolLaunchd(ports_.processes, user_.userID).disabledOverrides(isSystemDomain);
        const auto found = overrides.find(label);
        return found != overrides.end() && found->second;
    }

    /// What launchd knows of a job. It lists one that was told to end until its process has gone.
    enum class JobState { loaded, ending, gone, unknown };

    JobState jobState(const std::string& label, bool isSystemDomain) const {
        if (!toolArguments::isLabel(label)) return JobState::unknown;
        const auto printed = ports_.processes.run(
            toolPaths::launchctl, {"print", domain(isSystemDomain) + "/" + label}, toolTimeout);
        if (!printed) return JobState::unknown;
        if (printed->exitCode != 0) return JobState::gone;
        const bool isEnding = printed->standardOutput.find("state = SIGTERMed") != std::string::npos;
        return isEnding ? JobState::ending : JobState::loaded;
    }

    bool hasStopped(const operation::Bootout& bootout) const {
        const auto state = jobState(bootout.label, bootout.isSystemDomain);
        return state == JobState::ending || state == JobState::gone;
    }

    std::string domain(bool isSystemDomain) const {
        return toolArguments::launchdDomain(isSystemDomain, user_.userID);
    }

    Message blocked(const std::string& argument) const {
        ports_.log.warning("Operation blocked: \"{}\" cannot be handed to a tool", argument);
        return {toolArguments::unsafeArgumentKey};
    }

    static Message launchctlFailure(int status) {
        if (ToolLaunchd::meansNoSession(status)) return {ToolLaunchd::noSessionKey};
        return {"failure.launchctlExit %lld", {std::to_string(status)}};
    }
    static Message keychainFailure(std::int32_t status) {
        switch (status) {
        case keychainInvalidOwnerEdit:
            return {"failure.keychainRefused"};
        case keychainInteractionNotAllowed:
        case keychainAuthorizationFailed:
            return {"failure.keychainLocked"};
        case keychainNotAvailable:
        case keychainNoSuchKeychain:
        case keychainNoDefault:
            return {"failure.keychainGone"};
        default:
            break;
        }
        return {"failure.keychainStatus %lld", {std::to_string(status)}};
    }
    static Failure exitFailure(const Status& status, int alsoFine) {
        if (!status) return status.error();
        if (*status == 0 || *status == alsoFine) return std::nullopt;
        return Message{"failure.exit %@", {std::to_string(*status)}};
    }

    const UserScopeRunner::Ports& ports_;
    const UserEnvironment& user_;
    const PathPolicy& policy_;
};

} // namespace

UserScopeRunner::UserScopeRunner(Ports ports, UserEnvironment user)
    : ports_(ports), user_(std::move(user)), policy_(user_, ports_.files) {}

std::vector<OperationResult> UserScopeRunner::run(const std::vector<RemovalOperation>& operations) {
    const Step step(ports_, user_, policy_);
    std::vector<OperationResult> results;
    for (const auto& operation : operations) {
        auto failure = std::visit(step, operation.kind);
        if (failure) ports_.log.info("Operation {} failed: {}", operation.id, failure->key);
        results.push_back(failure ? OperationResult::failure(operation.id, std::move(*failure))
                                  : OperationResult::success(operation.id));
    }
    return results;
}

} // namespace tidwen
