#pragma once

#include "base/executor.h"
#include "base/step_progress.h"

#include <functional>
#include <memory>

namespace tidwen {

/// Passes progress from the working thread to the main thread. Only the newest step is shown, and at most one
/// call is queued there. Main thread only; shows nothing after its destruction.
class ProgressRelay {
  public:
    /// `main` must outlive the observers.
    ProgressRelay(Executor& main, std::function<void(const StepProgress&)> show);

    /// May be called from any thread, also after the relay's destruction.
    OnStep observer() const;

  private:
    struct Newest;
    Executor& main_;
    std::shared_ptr<Newest> newest_;
    std::shared_ptr<std::function<void(const StepProgress&)>> show_;
};

} // namespace tidwen
