#pragma once

#include "base/step_progress.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The failure of a step that was not begun because the user asked to stop.
inline constexpr const char* stoppedKey = "failure.stopped";
/// The kind of a step that is a whole batch with one password prompt.
inline constexpr std::string_view administratorStep = "administrator";
/// The kind of the work after the last step.
inline constexpr std::string_view finishingStep = "finish";

bool wasNotBegun(const OperationResult& result);

/// Numbers the steps of a removal or an undo as they begin, and reports each.
class StepCounter {
  public:
    /// The control must outlive it.
    explicit StepCounter(const StepControl& control) : control_(control) {}

    void expect(std::size_t total) { progress_.total = total; }
    bool isStopped() const { return control_.isStopped(); }
    /// `count`: number of steps in the batch; it is reported with the number of the last one.
    void begin(std::string_view kind, std::string item, std::size_t count = 1);
    /// For the step that began last.
    void tellCopied(std::uint64_t bytes);
    /// The last step has ended, if any began; only bookkeeping follows.
    void finish();

  private:
    const StepControl& control_;
    StepProgress progress_;
    std::size_t begun_ = 0;
};

/// Passes operations to the runner one by one, or all at once where each call asks for a password, and
/// reports each step as it begins. After a stop is requested no further step begins: the rest fails with
/// `stoppedKey`. A batch behind a password prompt cannot be stopped once it runs.
std::vector<OperationResult> runStepwise(PrivilegedRunner& runner,
                                         const std::vector<RemovalOperation>& operations, StepCounter& steps);

} // namespace tidwen
