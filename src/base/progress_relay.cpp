#include "base/progress_relay.h"

#include <mutex>
#include <utility>

namespace tidwen {

struct ProgressRelay::Newest {
    std::mutex mutex;
    StepProgress progress;
    bool isOnItsWay = false;

    /// True when no delivery to the main thread is queued yet.
    bool put(const StepProgress& next) {
        const std::lock_guard lock(mutex);
        progress = next;
        return !std::exchange(isOnItsWay, true);
    }
    StepProgress take() {
        const std::lock_guard lock(mutex);
        isOnItsWay = false;
        return progress;
    }
};

ProgressRelay::ProgressRelay(Executor& main, std::function<void(const StepProgress&)> show)
    : main_(main),
      newest_(std::make_shared<Newest>()),
      show_(std::make_shared<std::function<void(const StepProgress&)>>(std::move(show))) {}

OnStep ProgressRelay::observer() const {
    return [&main = main_, newest = newest_, show = std::weak_ptr(show_)](const StepProgress& progress) {
        if (!newest->put(progress)) return;
        main.post([newest, show] {
            const auto taken = newest->take();
            if (const auto call = show.lock()) (*call)(taken);
        });
    };
}

} // namespace tidwen
