#include "operations/permission_revoker.h"

#include "base/text.h"
#include "operations/admin_batch.h"
#include "operations/tool_arguments.h"
#include "operations/tool_paths.h"
#include "posix/posix_process_runner.h"
#include "scan/policy/path_policy.h"

#include <fmt/core.h>

namespace tidwen {
namespace {

constexpr std::chrono::seconds userTimeout{30};
constexpr std::chrono::seconds administratorTimeout{120};
constexpr std::string_view servicePrefix = "kTCCService";
constexpr std::string_view cancelledMark = "-128"; // the scripting tool's number for a dismissed prompt

using Outcome = tl::expected<void, PermissionRevokerError>;

Outcome failed(std::string text) {
    return tl::unexpected(PermissionRevokerError{PermissionRevokerError::Kind::failed, std::move(text), {}});
}

Outcome judge(const tl::expected<ProcessResult, ProcessRunnerError>& result, bool asksForPassword) {
    if (!result)
        return tl::unexpected(
            PermissionRevokerError{PermissionRevokerError::Kind::process, {}, result.error()});
    if (result->exitCode == 0) return {};
    if (asksForPassword && result->standardError.find(cancelledMark) != std::string::npos)
        return tl::unexpected(
            PermissionRevokerError{PermissionRevokerError::Kind::authorizationCancelled, {}, {}});
    return failed(trimmed(result->standardError.empty() ? result->standardOutput : result->standardError));
}

} // namespace

std::optional<Message> PermissionRevokerError::describe() const {
    switch (kind) {
    case Kind::failed:
        return Message{"permissions.revoke.failed %@", {text}};
    case Kind::refused:
        return Message{text};
    case Kind::authorizationCancelled:
        return std::nullopt;
    case Kind::process:
        return tidwen::describe(process);
    }
    return std::nullopt;
}

std::string shortServiceName(const std::string& service) {
    return service.starts_with(servicePrefix) ? service.substr(servicePrefix.size()) : service;
}

Outcome ToolPermissionRevoker::revoke(const PermissionGrant& grant, const std::string& bundleID) {
    const auto service = shortServiceName(grant.service);
    // An empty word would widen the reset to every service or application, "-…" would be an option.
    if (!toolArguments::isIdentifier(bundleID) || !toolArguments::isIdentifier(service))
        return failed(bundleID + " " + service);
    if (grant.scope == PermissionGrant::Scope::user)
        return judge(processes_.run(toolPaths::tccutil, {"reset", service, bundleID}, userTimeout), false);
    const auto line =
        fmt::format("{} {} {} {}", adminBatch::quoted(toolPaths::tccutil), adminBatch::quoted("reset"),
                    adminBatch::quoted(service), adminBatch::quoted(bundleID));
    return judge(
        processes_.run(toolPaths::osascript, {"-e", adminBatch::appleScript(line)}, administratorTimeout),
        true);
}

} // namespace tidwen
