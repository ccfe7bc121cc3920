#pragma once

#include "platform/notifications.h"
#include "platform/process_runner.h"

#include <functional>

namespace tidwen {

/// Notifications of a program outside a bundle on a Mac, through osascript: macOS has no other for one. They
/// appear as those of the script's editor, have no button and never call back, and whether the user allows
/// them cannot be asked.
class ScriptNotifications : public Notifications {
  public:
    explicit ScriptNotifications(ProcessRunner& processes) : processes_(processes) {}

    NotificationState state() const override { return NotificationState::allowed; }
    void requestAuthorization(std::function<void(NotificationState)> answered) override { answered(state()); }
    bool post(const UserNotification& notification) override;
    void onResponse(Response) override {}

  private:
    ProcessRunner& processes_;
};

} // namespace tidwen
