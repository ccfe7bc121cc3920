#pragma once

#include "platform/notifications.h"

#import <UserNotifications/UserNotifications.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace tidwen {

/// Keeps the last click on a notification until somebody listens. Any thread.
struct NotificationListener {
    using Info = std::map<std::string, std::string>;
    std::mutex mutex;
    Notifications::Response response;
    std::optional<std::pair<std::string, Info>> waiting;

    void deliver(const std::string& action, Info info);
    /// Also tells the click that waits.
    void listen(Notifications::Response listener);
};

} // namespace tidwen

/// Hears of the user's answers from the notification centre.
@interface TidwenNotificationDelegate : NSObject <UNUserNotificationCenterDelegate>
@property(nonatomic) std::shared_ptr<tidwen::NotificationListener> listener;
@end
