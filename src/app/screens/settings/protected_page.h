#pragma once

#include "app/models/user_settings.h"
#include "app/screens/settings/settings_page.h"
#include "base/texts.h"
#include "scan/applications/installed_app.h"

#include <string>
#include <vector>

class QListWidget;
class QPushButton;

namespace tidwen {

/// The applications that are never removed.
class ProtectedPage final : public SettingsPage {
  public:
    /// `installed`: to choose from, and to name what is protected; may be empty.
    ProtectedPage(UserSettings& settings, std::vector<SharedApp> installed, const Texts& texts);

  private:
    void showPresent();
    void choose();
    QString nameOf(const std::string& bundleID) const;

    UserSettings& settings_;
    std::vector<SharedApp> installed_;
    QListWidget* list_ = nullptr;
    QLabel* none_ = nullptr;
    QPushButton* add_ = nullptr;
    QPushButton* remove_ = nullptr;
};

} // namespace tidwen
