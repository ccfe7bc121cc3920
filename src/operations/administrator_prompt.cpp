#include "operations/administrator_prompt.h"

#include "operations/admin_batch.h"
#include "operations/tool_paths.h"
#include "posix/posix_process_runner.h"

#include <optional>
#include <string_view>
#include <utility>

namespace tidwen {

Message AdminScriptRunnerError::describe() const {
    switch (kind) {
    case Kind::authorizationCancelled:
        return {"failure.adminCancelled"};
    case Kind::wrongPassword:
        return {"failure.adminWrongPassword"};
    case Kind::nobodyToAsk:
        return {"failure.adminNobodyToAsk"};
    case Kind::process:
        return tidwen::describe(process);
    case Kind::scriptFailed:
        break;
    }
    return {message};
}

namespace {

/// What a failed prompt means, by the number in the last parentheses: the text around it is localized, and
/// may quote the script. nullopt when the script itself failed.
std::optional<AdminScriptRunnerError::Kind> promptFailure(std::string_view standardError) {
    using Kind = AdminScriptRunnerError::Kind;
    const auto begin = standardError.rfind('(');
    if (begin == standardError.npos) return std::nullopt;
    const auto number = standardError.substr(begin + 1, standardError.find(')', begin) - begin - 1);
    if (number == "-128") return Kind::authorizationCancelled;
    if (number == "-60007") return Kind::wrongPassword;
    if (number == "-1713") return Kind::nobodyToAsk;
    return std::nullopt;
}

} // namespace

tl::expected<ProcessResult, AdminScriptRunnerError>
runAsAdministrator(ProcessRunner& processes, const std::string& script, std::chrono::milliseconds timeout) {
    using Kind = AdminScriptRunnerError::Kind;
    auto result = processes.run(toolPaths::osascript, {"-e", adminBatch::appleScript(script)}, timeout);
    if (!result)
        return tl::unexpected(
            AdminScriptRunnerError{.kind = Kind::process, .process = std::move(result.error())});
    if (result->exitCode != 0)
        if (const auto kind = promptFailure(result->standardError))
            return tl::unexpected(AdminScriptRunnerError{.kind = *kind});
    return std::move(*result);
}

} // namespace tidwen
