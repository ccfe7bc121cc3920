#pragma once

#include "app/models/own_services.h"
#include "app/screens/settings/permissions_page.h"
#include "app/widgets/sheet.h"
#include "base/observable.h"
#include "base/texts.h"
#include "scan/applications/installed_app.h"
#include "system/permissions_model.h"

#include <map>
#include <vector>

class QScrollArea;

namespace tidwen {

class SidebarItem;

/// The settings, over whatever the window shows.
class SettingsSheet final : public Sheet {
  public:
    enum class Tab { general, permissions, trash, protectedApps, about };

    /// Of the Mac that is open.
    struct MacFacts {
        PermissionsModel* own = nullptr; ///< null unless it is the running one
        std::vector<SharedApp> installed = {};
        PermissionsPage::OpenPane openPane = {};
    };

    /// What is passed by reference outlives it.
    SettingsSheet(QWidget* window, OwnServices& own, MacFacts mac, const Texts& texts);

    void go(Tab tab);
    Tab tab() const { return tab_; }

  private:
    QWidget* makeRail();
    QWidget* makeMain();
    QWidget* makePage(Tab tab);
    void showFaults();

    OwnServices& own_;
    MacFacts mac_;
    const Texts& texts_;
    Tab tab_ = Tab::general;
    std::map<Tab, SidebarItem*> tabs_;
    QBoxLayout* faults_ = nullptr;
    QScrollArea* page_ = nullptr;
    std::vector<Subscription> following_;
};

} // namespace tidwen
