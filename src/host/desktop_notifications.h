#pragma once

#include "platform/notifications.h"
#include "platform/process_runner.h"

#include <string>

namespace tidwen {

/// The notification service of a Linux desktop, through /usr/bin/notify-send (package libnotify-bin).
/// Unavailable without the tool or without a session bus. The desktop asks nobody for permission. Buttons
/// need somebody who waits for them, so a notification is shown without and answers nothing.
class DesktopNotifications : public Notifications {
  public:
    explicit DesktopNotifications(ProcessRunner& processes, std::string tool = "/usr/bin/notify-send")
        : processes_(processes), tool_(std::move(tool)) {}

    NotificationState state() const override;
    void requestAuthorization(std::function<void(NotificationState)> answered) override { answered(state()); }
    bool post(const UserNotification& notification) override;
    void onResponse(Response) override {}

  private:
    ProcessRunner& processes_;
    std::string tool_;
};

} // namespace tidwen
