#include "macos/notification_delegate.h"

#include "macos/foundation_text.h"

#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace tidwen {

void NotificationListener::deliver(const std::string& action, Info info) {
    const std::lock_guard lock(mutex);
    if (response)
        response(action, info);
    else
        waiting = {action, std::move(info)};
}

void NotificationListener::listen(Notifications::Response listener) {
    const std::lock_guard lock(mutex);
    response = std::move(listener);
    const auto click = std::exchange(waiting, std::nullopt);
    if (click && response) response(click->first, click->second);
}

} // namespace tidwen

@implementation TidwenNotificationDelegate
/// Shown although the program is in front.
- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
       willPresentNotification:(UNNotification*)__unused notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completionHandler {
    completionHandler(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
    tidwen::NotificationListener::Info info;
    NSDictionary* const given = response.notification.request.content.userInfo;
    for (NSString* key in given)
        info[tidwen::textOf(key)] = tidwen::textOf([given objectForKey:key]);
    const bool isDefault = [response.actionIdentifier isEqual:UNNotificationDefaultActionIdentifier];
    self.listener->deliver(isDefault ? tidwen::defaultNotificationAction
                                     : tidwen::textOf(response.actionIdentifier),
                           std::move(info));
    completionHandler();
}
@end
