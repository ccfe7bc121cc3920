#include "system/notification_permission.h"

namespace tidwen {

NotificationPermission::NotificationPermission(Notifications& notifications, Executor& main)
    : notifications_(notifications), main_(main) {}

void NotificationPermission::refresh() {
    const auto settled = notifications_.state();
    state.set(settled == NotificationState::notAsked && isRequesting_ ? NotificationState::asking : settled);
}

void NotificationPermission::request() {
    if (isRequesting_) return;
    isRequesting_ = true;
    refresh();
    notifications_.requestAuthorization([this, alive = std::weak_ptr(alive_)](NotificationState answer) {
        main_.post([this, alive, answer] {
            if (alive.expired()) return;
            isRequesting_ = false;
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
