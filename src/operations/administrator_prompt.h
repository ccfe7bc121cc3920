#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <chrono>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a script gave no output at all.
struct AdminScriptRunnerError {
    enum class Kind { scriptFailed, authorizationCancelled, process };
    Kind kind = Kind::scriptFailed;
    std::string message = {};        ///< of `scriptFailed`
    ProcessRunnerError process = {}; ///< of `process`
    Message describe() const;
};

/// Runs a shell script as root through /usr/bin/osascript, behind the system's own prompt. `timeout` includes
/// the time that the user takes to answer it. A script that ended with a status of its own is an answer.
tl::expected<ProcessResult, AdminScriptRunnerError>
runAsAdministrator(ProcessRunner& processes, const std::string& script, std::chrono::milliseconds timeout);

} // namespace tidwen
