#pragma once

#include "base/message.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"

#include <functional>
#include <optional>
#include <vector>

namespace tidwen::test {

/// An operation with only the kind set.
inline RemovalOperation step(int id, RemovalOperation::Kind kind) {
    return {.id = id, .kind = std::move(kind), .displayName = {}, .bundleID = {}};
}

/// Records its operations. Every operation succeeds unless `answer` returns a reason.
class RecordingRunner : public PrivilegedRunner {
  public:
    std::vector<OperationResult> run(const std::vector<RemovalOperation>& operations) override {
        batches.push_back(operations);
        std::vector<OperationResult> results;
        for (const auto& each : operations) {
            auto reason = answer ? answer(each) : std::nullopt;
            results.push_back({each.id, !reason, std::move(reason)});
        }
        return results;
    }

    bool asksPerRun() const override { return asksForPassword; }

    bool asksForPassword = false;
    std::function<std::optional<Message>(const RemovalOperation&)> answer;
    std::vector<std::vector<RemovalOperation>> batches;
};

} // namespace tidwen::test
