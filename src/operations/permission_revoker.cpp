#include "operations/permission_revoker.h"

#include "base/shell_word.h"
#include "base/text.h"
#include "operations/administrator_prompt.h"
#include "operations/tool_arguments.h"
#include "operations/tool_paths.h"
#include "posix/posix_process_runner.h"
#include "scan/policy/path_policy.h"

#include <chrono>
#include <fmt/core.h>
#include <string_view>

namespace tidwen {
namespace {

constexpr std::chrono::seconds userTimeout{30};
constexpr std::chrono::seconds administratorTimeout{120};
constexpr std::string_view servicePrefix = "kTCCService";

using Outcome = tl::expected<void, PermissionRevokerError>;

Outcome failed(std::string text) {
    return tl::unexpected(PermissionRevokerError{PermissionRevokerError::Kind::failed, std::move(text), {}});
}

Outcome failed(ProcessRunnerError error) {
    return tl::unexpected(
        PermissionRevokerError{PermissionRevokerError::Kind::process, {}, std::move(error)});
}

Outcome judge(const ProcessResult& result) {
    if (result.exitCode == 0) return {};
    return failed(trimmed(result.standardError.empty() ? result.standardOutput : result.standardError));
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
    // An empty argument would extend the reset to every service or application; "-…" would be an option.
    if (!toolArguments::isIdentifier(bundleID) || !toolArguments::isIdentifier(service))
        return failed(bundleID + " " + service);
    if (grant.scope == PermissionGrant::Scope::user) {
        const auto result = processes_.run(toolPaths::tccutil, {"reset", service, bundleID}, userTimeout);
        return result ? judge(*result) : failed(result.error());
    }
    const auto line = fmt::format("{} {} {} {}", shellWord(toolPaths::tccutil), shellWord("reset"),
                                  shellWord(service), shellWord(bundleID));
    const auto result = runAsAdministrator(processes_, line, administratorTimeout);
    if (result) return judge(*result);
    if (result.error().kind == AdminScriptRunnerError::Kind::authorizationCancelled)
        return tl::unexpected(
            PermissionRevokerError{PermissionRevokerError::Kind::authorizationCancelled, {}, {}});
    if (result.error().kind != AdminScriptRunnerError::Kind::process)
        return tl::unexpected(
            PermissionRevokerError{PermissionRevokerError::Kind::refused, result.error().describe().key, {}});
    return failed(result.error().process);
}

} // namespace tidwen
