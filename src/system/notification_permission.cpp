#include "system/notification_permission.h"

namespace tidwen {

NotificationPermission::NotificationPermission(Notifications& notifications, Executor& main)
    : notifications_(notifications), main_(main) {}

void NotificationPermission::refresh() {
    const auto settled = notifications_.state();
    // While the service has no answer, the answer to this process's own request counts.
    if (settled != NotificationState::notAsked)
        state.set(settled);
    else
        state.set(isRequesting_ ? NotificationState::asking : answer_.value_or(settled));
}

void NotificationPermission::request() {
    if (isRequesting_) return;
    isRequesting_ = true;
    refresh();
    notifications_.requestAuthorization(
        [this, main = &main_, alive = std::weak_ptr(alive_)](NotificationState answer) {
            main->post([this, alive, answer] {
                if (alive.expired()) return;
                isRequesting_ = false;
                answer_ = answer;
                state.set(answer);
            });
        });
}

} // namespace tidwen
