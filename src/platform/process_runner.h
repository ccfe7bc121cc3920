#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Exit status and output of a tool that ran to its end.
struct ProcessResult {
    std::int32_t exitCode = 0;  ///< 128 + signal number when a signal terminated it
    std::string standardOutput; ///< empty when the bytes are not valid UTF-8
    std::string standardError;  ///< likewise
    friend bool operator==(const ProcessResult&, const ProcessResult&) = default;
};

/// Why a tool gave no result. `text` is the reason why it could not be launched; empty for a time-out.
struct ProcessRunnerError {
    enum class Kind { launchFailed, timedOut };
    Kind kind = Kind::launchFailed;
    std::string text;
    friend bool operator==(const ProcessRunnerError&, const ProcessRunnerError&) = default;
};

/// Runs external tools. A port, so that tests can stand in for the tools.
class ProcessRunner {
  public:
    virtual ~ProcessRunner() = default;
    /// Runs `executable` (an absolute path, no search) with the null device as input and captures its output.
    /// Blocks; never call it on the main thread. A tool that exceeds `timeout` is terminated.
    virtual tl::expected<ProcessResult, ProcessRunnerError> run(const std::string& executable,
                                                                const std::vector<std::string>& arguments,
                                                                std::chrono::milliseconds timeout) = 0;
};

} // namespace tidwen
