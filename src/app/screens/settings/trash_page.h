#pragma once

#include "app/models/user_settings.h"
#include "app/screens/settings/settings_page.h"
#include "base/texts.h"
#include "system/notification_permission.h"
#include "system/permissions_model.h"

#include <functional>

class QPushButton;

namespace tidwen {

class Toggle;

/// Whether applications in the Trash of this Mac are noticed, and what that needs.
class TrashPage final : public SettingsPage {
  public:
    /// `own`: null unless the running Mac is open.
    TrashPage(UserSettings& settings, PermissionsModel* own, NotificationPermission& notifications,
              const Texts& texts, std::function<void()> openPermissions);

  private:
    void makeSwitch(std::function<void()> openPermissions);
    void showPresent();

    UserSettings& settings_;
    PermissionsModel* own_;
    NotificationPermission& notifications_;
    Toggle* watch_ = nullptr;
    QLabel* needs_ = nullptr;
    QPushButton* permissions_ = nullptr;
};

} // namespace tidwen
