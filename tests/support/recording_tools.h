#pragma once

#include "platform/process_runner.h"

#include <chrono>
#include <functional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen::test {

/// A process runner that records every call and reports success unless `answer` returns otherwise.
class RecordingTools : public ProcessRunner {
  public:
    using Answer = tl::expected<ProcessResult, ProcessRunnerError>;
    struct Call {
        std::string executable;
        std::vector<std::string> arguments;
        std::chrono::milliseconds timeout{};
    };

    Answer run(const std::string& executable, const std::vector<std::string>& arguments,
               std::chrono::milliseconds timeout) override {
        calls.push_back({executable, arguments, timeout});
        return answer ? answer(calls.back()) : ProcessResult{};
    }

    static Answer missing() {
        return tl::unexpected(ProcessRunnerError{ProcessRunnerError::Kind::launchFailed, "No such file"});
    }
    static Answer hanging() {
        return tl::unexpected(ProcessRunnerError{ProcessRunnerError::Kind::timedOut, {}});
    }

    std::function<Answer(const Call&)> answer;
    std::vector<Call> calls;
};

} // namespace tidwen::test
