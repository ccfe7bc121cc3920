#pragma once

#include "platform/process_runner.h"

#include <chrono>
#include <functional>
#include <mutex>
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
        const Call call{executable, arguments, timeout};
        {
            const std::lock_guard lock(mutex_);
            calls.push_back(call);
        }
        return answer ? answer(call) : ProcessResult{};
    }

    static Answer missing() {
        return tl::unexpected(ProcessRunnerError{ProcessRunnerError::Kind::launchFailed, "No such file"});
    }
    static Answer hanging() {
        return tl::unexpected(ProcessRunnerError{ProcessRunnerError::Kind::timedOut, {}});
    }

    std::function<Answer(const Call&)> answer;
    std::vector<Call> calls;

  private:
    std::mutex mutex_;
};

} // namespace tidwen::test
