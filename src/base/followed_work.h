#pragma once

#include "base/observable.h"
#include "base/progress_relay.h"

#include <optional>

namespace tidwen {

/// The work in steps that a model has running: shows its newest step in a property, and stops it after the
/// step at hand. Belongs to the main thread; a part of the model, behind the property.
class FollowedWork {
  public:
    using Progress = Property<std::optional<StepProgress>>;

    /// Both outlive it.
    FollowedWork(Executor& main, Progress& progress) : main_(main), progress_(progress) {}

    /// For the work that begins now. What was stopped or told before does not count for it.
    StepControl begin() {
        stop_ = StopSource();
        relay_.emplace(main_, [&progress = progress_](const StepProgress& step) { progress.set(step); });
        return {stop_.token(), relay_->observer()};
    }
    /// It has ended: nothing of it is shown any more.
    void end() {
        relay_.reset();
        progress_.set(std::nullopt);
    }
    void stop() { stop_.requestStop(); }

  private:
    Executor& main_;
    Progress& progress_;
    StopSource stop_;
    std::optional<ProgressRelay> relay_; ///< while something runs
};

} // namespace tidwen
