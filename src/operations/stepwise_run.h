#pragma once

#include "base/step_progress.h"
#include "operations/privileged_runner.h"

#include <string_view>
#include <vector>

namespace tidwen {

/// What a step that was not begun fails with, because somebody asked to stop.
inline constexpr const char* stoppedKey = "failure.stopped";
/// The kind of a step that is a whole batch behind one password prompt.
inline constexpr std::string_view administratorStep = "administrator";
/// The kind of what follows the last step.
inline constexpr std::string_view finishingStep = "finish";

bool wasNotBegun(const OperationResult& result);

/// Numbers the steps of a removal or an undo as they begin, and tells of each.
class StepCounter {
  public:
    /// The control outlives it.
    explicit StepCounter(const StepControl& control) : control_(control) {}

    void expect(std::size_t total) { progress_.total = total; }
    bool isStopped() const { return control_.isStopped(); }
    /// `count`: of the steps that are one; it bears the number of the last of them.
    void begin(std::string_view kind, std::string item, std::size_t count = 1);
    /// Of the step that began last.
    void tellCopied(std::uint64_t bytes);
    /// The last of them has ended, if any began; what follows is book-keeping.
    void finish();

  private:
    const StepControl& control_;
    StepProgress progress_;
    std::size_t begun_ = 0;
};

/// Hands operations to their runner one by one, or all at once where each call asks for a password, and tells
/// of what begins. Once it is asked to stop, none that has not begun is: these fail with `stoppedKey`. What
/// runs behind a password prompt cannot be stopped any more.
std::vector<OperationResult> runStepwise(PrivilegedRunner& runner,
                                         const std::vector<RemovalOperation>& operations, StepCounter& steps);

} // namespace tidwen
