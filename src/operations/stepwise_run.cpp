#include "operations/stepwise_run.h"

#include "operations/removal_operation.h"
#include "posix/copied_bytes.h"

#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace tidwen {

bool wasNotBegun(const OperationResult& result) {
    return result.failureReason && result.failureReason->key == stoppedKey;
}

void StepCounter::begin(std::string_view kind, std::string item, std::size_t count) {
    begun_ += count;
    progress_.step = begun_;
    progress_.kind = kind;
    progress_.item = std::move(item);
    progress_.copiedBytes = 0;
    control_.report(progress_);
}

void StepCounter::tellCopied(std::uint64_t bytes) {
    progress_.copiedBytes = bytes;
    control_.report(progress_);
}

void StepCounter::finish() {
    if (begun_ > 0) begin(finishingStep, {}, 0);
}

std::vector<OperationResult>
runStepwise(PrivilegedRunner& runner, const std::vector<RemovalOperation>& operations, StepCounter& steps) {
    std::vector<OperationResult> results;
    if (runner.asksPerRun() && !operations.empty() && !steps.isStopped()) {
        steps.begin(administratorStep, {}, operations.size());
        return runner.run(operations);
    }
    const CopiedBytes copied([&](std::uint64_t bytes) { steps.tellCopied(bytes); });
    for (const auto& each : operations) {
        if (steps.isStopped()) {
            results.push_back(OperationResult::failure(each.id, {stoppedKey}));
            continue;
        }
        steps.begin(kindName(each.kind), each.displayName);
        auto result = runner.run({each});
        std::move(result.begin(), result.end(), std::back_inserter(results));
    }
    return results;
}

} // namespace tidwen
