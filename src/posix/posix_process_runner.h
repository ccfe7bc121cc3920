#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <chrono>
#include <cstddef>

namespace tidwen {

/// Starts tools with posix_spawn and reads both their pipes in the calling thread, so that there is nothing
/// left to wait for or to clean up when a call returns.
///
/// A tool gets a process group of its own and a small environment: the system's search path, and who the user
/// is. No language is passed on, because the answers are read by programs, and nothing that could change what
/// a tool does.
class PosixProcessRunner : public ProcessRunner {
  public:
    struct Limits {
        /// Kept of each stream; what a tool prints beyond it is read and dropped.
        std::size_t outputBytes = 64u << 20;
        /// How long a tool that overran its time may take to end, before it is killed with its children.
        std::chrono::milliseconds terminationGrace{2'000};
        /// How long to read on after the tool ended, when a child of it holds a pipe open.
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
