#pragma once

#include <functional>
#include <map>
#include <string>

namespace tidwen {

/// Whether notifications of this program are shown.
enum class NotificationState { notAsked, asking, allowed, denied, unavailable };

struct UserNotification {
    std::string identifier = {}; ///< a later notification with the same identifier replaces this one
    std::string title = {};
    std::string body = {};
    std::string category = {};
    std::string actionIdentifier = {}; ///< of the single button; empty for none
    std::string actionTitle = {};
    std::map<std::string, std::string> userInfo = {}; ///< returned with the response
};

/// The desktop's notification service.
class Notifications {
  public:
    /// The user clicked the notification or its button. Called on a thread of the service.
    using Response = std::function<void(const std::string& actionIdentifier,
                                        const std::map<std::string, std::string>& userInfo)>;

    virtual ~Notifications() = default;
    virtual NotificationState state() const = 0;
    /// Asks the user once; calls `answered` on a thread of the service.
    virtual void requestAuthorization(std::function<void(NotificationState)> answered) = 0;
    /// False when the service did not accept it.
    virtual bool post(const UserNotification& notification) = 0;
    virtual void onResponse(Response response) = 0;
};

/// The action of a click on the notification itself.
inline constexpr const char* defaultNotificationAction = "default";

} // namespace tidwen
