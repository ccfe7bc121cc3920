#include "program/settings_follower.h"

#include <atomic>
#include <utility>

namespace tidwen {

struct SettingsFollower::Reload {
    std::function<void()> run;
    std::atomic<bool> isComing = false; ///< one that is on its way sees later changes, too
};

SettingsFollower::SettingsFollower(Defaults& defaults, Executor& main, std::function<void()> reload)
    : reload_(std::make_shared<Reload>()) {
    reload_->run = std::move(reload);
    const auto post = [&main, weak = std::weak_ptr(reload_)] {
        const auto waiting = weak.lock();
        if (!waiting || waiting->isComing.exchange(true)) return;
        main.post([weak] {
            const auto alive = weak.lock();
            if (!alive) return;
            alive->isComing = false;
            alive->run();
        });
    };
    watch_ = defaults.watch([&defaults, post] {
        (void)defaults.problem(); // reads what changed here, so that the main thread finds it read
        post();
    });
    post();
}

} // namespace tidwen
