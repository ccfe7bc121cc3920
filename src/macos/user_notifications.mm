#include "macos/user_notifications.h"

#include "macos/foundation_text.h"
#include "macos/notification_delegate.h"

#import <UserNotifications/UserNotifications.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <utility>

namespace tidwen {

struct UserNotifications::Parts {
    UNUserNotificationCenter* center = UNUserNotificationCenter.currentNotificationCenter;
    TidwenNotificationDelegate* delegate = [[TidwenNotificationDelegate alloc] init];
    std::shared_ptr<NotificationListener> listener = std::make_shared<NotificationListener>();
};

UserNotifications::UserNotifications() : parts_(std::make_unique<Parts>()) {
    parts_->delegate.listener = parts_->listener;
    parts_->center.delegate = parts_->delegate;
}

UserNotifications::~UserNotifications() {
    onResponse({});
}

NotificationState UserNotifications::state() const {
    const auto told = std::make_shared<std::promise<NotificationState>>();
    auto answer = told->get_future();
    [parts_->center getNotificationSettingsWithCompletionHandler:^(UNNotificationSettings* settings) {
      const auto status = settings.authorizationStatus;
      told->set_value(status == UNAuthorizationStatusNotDetermined ? NotificationState::notAsked
                      : status == UNAuthorizationStatusDenied      ? NotificationState::denied
                                                                   : NotificationState::allowed);
    }];
    const bool isThere = answer.wait_for(std::chrono::seconds(1)) == std::future_status::ready;
    return isThere ? answer.get() : NotificationState::notAsked;
}

void UserNotifications::requestAuthorization(std::function<void(NotificationState)> answered) {
    [parts_->center
        requestAuthorizationWithOptions:UNAuthorizationOptionAlert | UNAuthorizationOptionSound
                      completionHandler:^(BOOL isAllowed, NSError* __unused error) {
                        answered(isAllowed ? NotificationState::allowed : NotificationState::denied);
                      }];
}

bool UserNotifications::post(const UserNotification& notification) {
    @autoreleasepool {
        UNMutableNotificationContent* const content = [[UNMutableNotificationContent alloc] init];
        content.title = nsString(notification.title);
        content.body = nsString(notification.body);
        content.categoryIdentifier = nsString(notification.category);
        NSMutableDictionary* const info = [[NSMutableDictionary alloc] init];
        for (const auto& [key, value] : notification.userInfo)
            [info setObject:nsString(value) forKey:nsString(key)];
        content.userInfo = info;
        // Registered with every notification, because the button speaks the language of the moment.
        UNNotificationAction* const action =
            [UNNotificationAction actionWithIdentifier:nsString(notification.actionIdentifier)
                                                 title:nsString(notification.actionTitle)
                                               options:UNNotificationActionOptionForeground];
        UNNotificationCategory* const category =
            [UNNotificationCategory categoryWithIdentifier:content.categoryIdentifier
                                                   actions:[NSArray arrayWithObject:action]
                                         intentIdentifiers:[NSArray array]
                                                   options:UNNotificationCategoryOptionNone];
        [parts_->center setNotificationCategories:[NSSet setWithObject:category]];
        UNNotificationRequest* const request =
            [UNNotificationRequest requestWithIdentifier:nsString(notification.identifier)
                                                 content:content
                                                 trigger:nil];
        [parts_->center addNotificationRequest:request withCompletionHandler:nil];
        return true;
    }
}

void UserNotifications::onResponse(Response response) {
    parts_->listener->listen(std::move(response));
}

} // namespace tidwen
