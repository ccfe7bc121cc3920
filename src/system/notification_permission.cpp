#include "system/notification_permission.h"

namespace tidwen {

NotificationPermission::NotificationPermission(Notifications& notifications, Executor& main)
    : notifications_(notifications), main_(main) {}

void NotificationPermission::refresh() {
    const auto settled = notifications_.state();
    // A service that has not settled it yet leaves it to what this process knows of its own request.
    if (settled != NotificationState::notAsked)
        state.set(settled);
    else
        state.set(isRequesting_ ? NotificationState::asking : answer_.value_or(settled));
}

void NotificationPermission::request() {
    if (isRequesting_) return;
    isRequesting_ = true;
    refresh();
    notifications_.requestAuthorization([this, alive = std::weak_ptr(alive_)](NotificationState answer) {
        main_.post([this, alive, answer] {
            if (alive.expired()) return;
            isRequesting_ = false;
            answer_ = answer;
            state.set(answer);
        });
    });
}

std::string_view name(NotificationState state) {
    switch (state) {
    case NotificationState::notAsked:
        return "notAsked";
    case NotificationState::asking:
        return "asking";
    case NotificationState::allowed:
        return "allowed";
    case NotificationState::denied:
        return "denied";
    case NotificationState::unavailable:
        return "unavailable";
    }
    return "unavailable";
}

} // namespace tidwen
