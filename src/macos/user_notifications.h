#pragma once

#include "platform/notifications.h"

#include <functional>
#include <memory>

namespace tidwen {

/// The user notifications of macOS. Any thread. Only for the main program of a bundle, else the system's
/// notification centre throws.
class UserNotifications : public Notifications {
  public:
    /// Becomes the centre's delegate, so create it before the program's launch has ended: a click that
    /// started the program is told right after it.
    UserNotifications();
    ~UserNotifications() override;

    /// Waits for the centre, at most a second; `notAsked` when it does not answer.
    NotificationState state() const override;
    void requestAuthorization(std::function<void(NotificationState)> answered) override;
    /// Registers the notification's category with its button, then posts. True when it could be handed over.
    bool post(const UserNotification& notification) override;
    /// A click that came before this is told now.
    void onResponse(Response response) override;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace tidwen
