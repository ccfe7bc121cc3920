#include "operations/admin_script_runner.h"

#include "base/message.h"
#include "base/path.h"
#include "operations/admin_batch.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "operations/tool_arguments.h"
#include "platform/file_absence.h"
#include "platform/workspace.h"
#include "posix/posix_process_runner.h"
#include "scan/applications/bundle_names.h"

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

using Operations = std::vector<RemovalOperation>::const_iterator;

/// A script is one argument of a process, and macOS limits all arguments together to 1 MiB. Some five hundred
/// moves fit; only a larger removal asks for the password again.
constexpr std::size_t longestSource = 512u << 10;

Operations endOfBatch(Operations begin, Operations end, std::uint32_t userID) {
    std::size_t length = 0;
    auto next = begin;
    do {
        length += adminBatch::appleScript(adminBatch::line(*next, userID)).size();
        if (length > longestSource && next != begin) break;
    } while (++next != end);
    return next;
}

/// Undo loads the jobs in a manifest as root, and anyone may have written a manifest: only property lists in
/// the folder of system jobs are loaded into the system domain.
bool isSystemJobFile(const Path& plist) {
    return !plist.hasTraversal() && plist.parent() == Path("/Library/LaunchDaemons");
}

} // namespace

AdminScriptRunner::Execute AdminScriptRunner::throughOsascript(ProcessRunner& processes,
                                                               std::chrono::milliseconds timeout) {
    return [&processes, timeout](const std::string& script) {
        return runAsAdministrator(processes, script, timeout);
    };
}

AdminScriptRunner::AdminScriptRunner(Execute execute, FileSystem& files, UserEnvironment user, Log& log,
                                     Trash trash)
    : execute_(std::move(execute)),
      files_(files),
      user_(std::move(user)),
      policy_(user_, files),
      log_(log),
      trash_(trash) {}

std::vector<OperationResult> AdminScriptRunner::run(const std::vector<RemovalOperation>& operations) {
    std::vector<OperationResult> results;
    std::vector<RemovalOperation> allowed, asRoot;
    std::vector<std::size_t> places; // indices of the allowed operations
    for (const auto& operation : operations) {
        auto allowedOne = judged(operation);
        auto rootsPart = allowedOne.and_then([&](const auto& each) { return staged(each); });
        results.push_back(OperationResult::failure(operation.id, rootsPart ? Message() : rootsPart.error()));
        if (!rootsPart) continue;
        places.push_back(results.size() - 1);
        allowed.push_back(std::move(*allowedOne));
        asRoot.push_back(std::move(*rootsPart));
    }
    auto answers = runAllowed(asRoot);
    for (std::size_t i = 0; i < answers.size(); ++i)
        results[places[i]] = settled(followed(std::move(answers[i]), allowed[i]), allowed[i]);
    nameAppManagement(results, operations);
    return results;
}

void AdminScriptRunner::nameAppManagement(std::vector<OperationResult>& results,
                                          const std::vector<RemovalOperation>& operations) const {
    std::vector<OperationResult*> guarded;
    for (std::size_t i = 0; i < results.size(); ++i) {
        const auto* move = std::get_if<operation::Move>(&operations[i].kind);
        if (!move || !results[i].failureReason || results[i].failureReason->key != "failure.exit %@")
            continue;
        if (!isBundleName(move->source.lastComponent())) return; // something else is wrong
        const auto bundle = files_.info(move->source);
        if (bundle && !bundle->immutable) guarded.push_back(&results[i]);
    }
    for (auto* result : guarded)
        result->failureReason = Message{"failure.appManagement %@", {std::string(appManagementAddress)}};
}

tl::expected<RemovalOperation, Message> AdminScriptRunner::staged(RemovalOperation operation) {
    auto* move = std::get_if<operation::Move>(&operation.kind);
    if (!move || trash_ == Trash::openToRoot) return operation;
    auto rootsPart = staging_.prepare(*move);
    if (!rootsPart) return tl::unexpected(std::move(rootsPart.error()));
    *move = std::move(*rootsPart);
    return operation;
}

OperationResult AdminScriptRunner::followed(OperationResult result, const RemovalOperation& operation) {
    const auto* move = std::get_if<operation::Move>(&operation.kind);
    if (!move || trash_ == Trash::openToRoot) return result;
    // An abandoned batch may still be running; recovery looks again.
    if (result.failureReason && result.failureReason->key == "failure.timedOut") return result;
    auto failed =
        staging_.settle(policy_.isQuarantineEndpoint(move->destination) ? move->destination : move->source);
    return failed ? OperationResult::failure(result.operationID, std::move(*failed)) : result;
}

OperationResult AdminScriptRunner::settled(OperationResult result, const RemovalOperation& operation) const {
    const auto* move = std::get_if<operation::Move>(&operation.kind);
    if (result.succeeded || !move || result.failureReason->key == "failure.destinationOccupied")
        return result;
    if (!isMissing(files_, move->source) || !files_.exists(move->destination)) return result;
    log_.warning("Moved although the batch says {}: {}", result.failureReason->key, move->source.string());
    return OperationResult::success(operation.id);
}

tl::expected<RemovalOperation, Message> AdminScriptRunner::judged(RemovalOperation operation) const {
    const auto blocked = [&](const char* key, const char* why, const std::string& what) {
        log_.warning("Privileged {} blocked {}: {}", kindName(operation.kind), why, what);
        return tl::unexpected(Message{key});
    };
    constexpr auto byPolicy = "by path policy", noArgument = "because it cannot be handed to a tool";
    if (auto* move = std::get_if<operation::Move>(&operation.kind)) {
        const auto allowed = policy_.checkMove(move->source, move->destination, files_);
        if (!allowed) return blocked(blockedBySafetyPolicyKey, byPolicy, allowed.error().path);
        if (isAnother(allowed->source(), move->found, files_))
            return tl::unexpected(Message{changedSinceKey});
        if (hasLostRunFolder(*allowed, files_, policy_)) return tl::unexpected(Message{quarantineGoneKey});
        *move = {allowed->source(), allowed->destination()};
        if (!toolArguments::areSafe(operation.kind))
            return blocked(blockedBySafetyPolicyKey, noArgument, move->source.string());
        return operation;
    }
    const auto* bootstrap = std::get_if<operation::Bootstrap>(&operation.kind);
    if (bootstrap && bootstrap->isSystemDomain && !isSystemJobFile(bootstrap->plist))
        return blocked(blockedBySafetyPolicyKey, byPolicy, bootstrap->plist.string());
    if (!toolArguments::areSafe(operation.kind))
        return blocked(toolArguments::unsafeArgumentKey, noArgument, operation.displayName);
    return operation;
}

std::vector<OperationResult>
AdminScriptRunner::runAllowed(const std::vector<RemovalOperation>& operations) const {
    std::vector<OperationResult> results;
    for (auto next = operations.begin(); next != operations.end();) {
        const auto end = endOfBatch(next, operations.end(), user_.userID);
        const std::vector<RemovalOperation> batch(next, end);
        const auto output = execute_(adminBatch::script(batch, user_.userID));
        if (!output) { // do not prompt again
            for (; next != operations.end(); ++next)
                results.push_back(OperationResult::failure(next->id, output.error().describe()));
            break;
        }
        if (output->exitCode != 0) log_.warning("The administrator batch failed: {}", output->standardError);
        for (auto& result : adminBatch::parse(output->standardOutput, batch))
            results.push_back(std::move(result));
        next = end;
    }
    return results;
}

} // namespace tidwen
