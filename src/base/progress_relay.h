#pragma once

#include "base/executor.h"
#include "base/step_progress.h"

#include <functional>
#include <memory>

namespace tidwen {

/// Hands progress from the thread that works to the main thread: the newest alone, however many steps there
/// were since the last time, so that at most one piece of work waits there. Belongs to the main thread; once
/// it is gone nothing is shown.
class ProgressRelay {
  public:
    /// `main` outlives the observers.
    ProgressRelay(Executor& main, std::function<void(const StepProgress&)> show);

    /// To be called from any thread, for as long as anybody wants.
    OnStep observer() const;

  private:
    struct Newest;
    Executor& main_;
    std::shared_ptr<Newest> newest_;
    std::shared_ptr<std::function<void(const StepProgress&)>> show_;
};

} // namespace tidwen
