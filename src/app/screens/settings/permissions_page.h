#pragma once

#include "app/screens/settings/settings_page.h"
#include "base/texts.h"
#include "platform/workspace.h"
#include "system/notification_permission.h"
#include "system/permissions_model.h"

#include <functional>
#include <vector>

class QPushButton;

namespace tidwen {

/// The words for what is known of Full Disk Access.
const char* stateKey(FullDiskAccessProbe::Status status);

/// What macOS lets this program do, followed while it is shown.
class PermissionsPage final : public SettingsPage {
  public:
    using OpenPane = std::function<void(SystemSettingsLauncher::Pane)>;

    /// `own`: null unless the running Mac is open; a volume asks for no permission.
    PermissionsPage(PermissionsModel* own, NotificationPermission& notifications, const Texts& texts,
                    const OpenPane& open);

  private:
    void refresh();
    void showPresent();
    QPushButton* addPermission(const char* title, QLabel*& state, const char* action,
                               std::function<void()> act);

    PermissionsModel* own_;
    NotificationPermission& notifications_;
    QLabel* fullDisk_ = nullptr;
    QLabel* allowed_ = nullptr;
    QLabel* finder_ = nullptr;
    std::vector<QPushButton*> ofRunningMac_;
    QPushButton* ask_ = nullptr;
};

} // namespace tidwen
