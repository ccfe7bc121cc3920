#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "platform/notifications.h"

#include <memory>
#include <optional>

namespace tidwen {

/// Whether the user allows this program to show notifications, for the settings screen. Main thread only.
class NotificationPermission {
  public:
    NotificationPermission(Notifications& notifications, Executor& main);

    Property<NotificationState> state{NotificationState::notAsked};

    void refresh();
    /// Asks the user; only one request at a time. Publishes the answer.
    void request();

  private:
    Notifications& notifications_;
    Executor& main_;
    bool isRequesting_ = false;
    std::optional<NotificationState> answer_; ///< of an earlier request
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace tidwen
