#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "platform/notifications.h"

#include <memory>
#include <optional>

namespace tidwen {

/// Whether the user lets this program notify him, as the settings show it. Belongs to the main thread.
class NotificationPermission {
  public:
    NotificationPermission(Notifications& notifications, Executor& main);

    Property<NotificationState> state{NotificationState::notAsked};

    void refresh();
    /// Asks the user, once at a time; the answer is published.
    void request();

  private:
    Notifications& notifications_;
    Executor& main_;
    bool isRequesting_ = false;
    std::optional<NotificationState> answer_; ///< of a request that was made before
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace tidwen
