#include "operations/administrator_prompt.h"

#include "operations/admin_batch.h"
#include "operations/tool_paths.h"
#include "posix/posix_process_runner.h"

#include <utility>

namespace tidwen {

Message AdminScriptRunnerError::describe() const {
    switch (kind) {
    case Kind::authorizationCancelled:
        return {"failure.adminCancelled"};
    case Kind::process:
        return tidwen::describe(process);
    case Kind::scriptFailed:
        break;
    }
    return {message};
}

tl::expected<ProcessResult, AdminScriptRunnerError>
runAsAdministrator(ProcessRunner& processes, const std::string& script, std::chrono::milliseconds timeout) {
    using Kind = AdminScriptRunnerError::Kind;
    auto result = processes.run(toolPaths::osascript, {"-e", adminBatch::appleScript(script)}, timeout);
    if (!result)
        return tl::unexpected(
            AdminScriptRunnerError{.kind = Kind::process, .process = std::move(result.error())});
    // The text around the number is localized.
    if (result->exitCode != 0 && result->standardError.find("-128") != std::string::npos)
        return tl::unexpected(AdminScriptRunnerError{.kind = Kind::authorizationCancelled});
    return std::move(*result);
}

} // namespace tidwen
