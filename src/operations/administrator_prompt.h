#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <chrono>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a script gave no output.
struct AdminScriptRunnerError {
    enum class Kind { scriptFailed, authorizationCancelled, wrongPassword, nobodyToAsk, process };
    Kind kind = Kind::scriptFailed;
    std::string message = {};        ///< for `scriptFailed`
    ProcessRunnerError process = {}; ///< for `process`
    Message describe() const;
};

/// Runs a shell script as root through /usr/bin/osascript, with the system's own prompt. `timeout` includes
/// the time the user takes to answer it. A script that ended with a nonzero status is a result; a prompt that
/// failed, after which no shell ran, is an error.
tl::expected<ProcessResult, AdminScriptRunnerError>
runAsAdministrator(ProcessRunner& processes, const std::string& script, std::chrono::milliseconds timeout);

} // namespace tidwen
