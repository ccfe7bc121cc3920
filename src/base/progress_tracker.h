#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/progress_relay.h"
#include "base/step_progress.h"
#include "base/stop_token.h"

#include <optional>

namespace tidwen {

/// Runs a model's stepwise work: shows the newest step in a property and stops the work after the current
/// step. Main thread only. A member of the model, declared after the property.
class ProgressTracker {
  public:
    using Progress = Property<std::optional<StepProgress>>;

    /// Both must outlive this object.
    ProgressTracker(Executor& main, Progress& progress) : main_(main), progress_(progress) {}

    /// The control for the work that begins now; earlier stops and steps do not affect it.
    StepControl begin() {
        stop_ = StopSource();
        relay_.emplace(main_, [&progress = progress_](const StepProgress& step) { progress.set(step); });
        return {stop_.token(), relay_->observer()};
    }
    /// The work has ended; shows none of its steps any more.
    void end() {
        relay_.reset();
        progress_.set(std::nullopt);
    }
    void stop() { stop_.requestStop(); }

  private:
    Executor& main_;
    Progress& progress_;
    StopSource stop_;
    std::optional<ProgressRelay> relay_; ///< set while work runs
};

} // namespace tidwen
