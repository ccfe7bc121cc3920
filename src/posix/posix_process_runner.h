#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Starts tools with posix_spawn and reads both pipes on the calling thread, so that nothing is left to wait
/// for or clean up when a call returns.
///
/// A tool gets its own process group and a small environment: the system's search path and the user's name.
/// No language is passed, because programs parse the output, and nothing that could change what a tool does.
class PosixProcessRunner : public ProcessRunner {
  public:
    struct Limits {
        /// Captured of each stream; further output is read and discarded.
        std::size_t outputBytes = 64u << 20;
        /// How long a terminated tool may take to end before it is killed with its children.
        std::chrono::milliseconds terminationGrace{2'000};
        /// How long to keep reading after the tool ended while a child of it holds a pipe open.
        std::chrono::milliseconds lingeringOutput{5'000};
    };

    PosixProcessRunner() = default;
    explicit PosixProcessRunner(Limits limits) : limits_(limits) {}

    tl::expected<ProcessResult, ProcessRunnerError> run(const std::string& executable,
                                                        const std::vector<std::string>& arguments,
                                                        std::chrono::milliseconds timeout) override;

  private:
    Limits limits_;
};

/// "failure.timedOut", or "failure.launchFailed %@" with the reason.
Message describe(const ProcessRunnerError& error);

} // namespace tidwen
