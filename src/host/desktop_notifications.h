#pragma once

#include "platform/notifications.h"
#include "platform/process_runner.h"

#include <functional>
#include <string>

namespace tidwen {

/// The notification service of a Linux desktop, through /usr/bin/notify-send (package libnotify-bin).
/// Unavailable without the tool or a session bus. The desktop requires no permission. A button would require
/// a process that waits for the response, so notifications have none and never call back.
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
