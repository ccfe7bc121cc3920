#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// How a tool that ran to its end ended, and what it printed.
struct ProcessResult {
    std::int32_t exitCode = 0;  ///< 128 + signal number when a signal ended it
    std::string standardOutput; ///< empty when the bytes are not valid UTF-8
    std::string standardError;  ///< same rule
    friend bool operator==(const ProcessResult&, const ProcessResult&) = default;
};

/// Why a tool gave no result. `text` is the reason a launch failed; empty for a time-out.
struct ProcessRunnerError {
    enum class Kind { launchFailed, timedOut };
    Kind kind = Kind::launchFailed;
    std::string text;
    friend bool operator==(const ProcessRunnerError&, const ProcessRunnerError&) = default;
};

/// Starts external tools. The port exists so that tests answer for the tools.
class ProcessRunner {
  public:
    virtual ~ProcessRunner() = default;
    /// Starts `executable` (an absolute path, no search) with the null device as input and captures what it
    /// prints. Blocks; never call it from the main thread. A tool that overruns `timeout` is terminated.
    virtual tl::expected<ProcessResult, ProcessRunnerError> run(const std::string& executable,
                                                                const std::vector<std::string>& arguments,
                                                                std::chrono::milliseconds timeout) = 0;
};

} // namespace tidwen
