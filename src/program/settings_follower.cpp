#include "program/settings_follower.h"

#include <atomic>
#include <utility>

namespace tidwen {

struct SettingsFollower::Reload {
    std::function<void()> run;
    std::atomic<bool> isComing = false; ///< a pending reload also sees later changes
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
        (void)defaults.problem(); // rereads the file here, so that the main thread need not
        post();
    });
    post();
}

} // namespace tidwen
