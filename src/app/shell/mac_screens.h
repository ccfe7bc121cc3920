#pragma once

#include "app/shell/open_mac.h"
#include "app/shell/place.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/workspace.h"
#include "scan/applications/app_target.h"

#include <QStackedWidget>
#include <functional>
#include <vector>

namespace tidwen {

class ApplicationsScreen;
class HistoryScreen;
class InstallersScreen;
class LeftoversScreen;
class ListScreen;
class ReportScreen;
class ReviewScreen;
class StartupScreen;
class WorkScreen;

/// The screens of one open Mac, of which one shows.
class MacScreens final : public QStackedWidget {
  public:
    /// What the screens ask for and cannot do themselves.
    struct Actions {
        std::function<void(const std::vector<Path>& bundles, RemovalMode mode)> lookAt;
        std::function<void()> sweep, rescan;
        std::function<void()> confirm, confirmInstallers, confirmStartupItems;
        std::function<void(AppTarget)> showPermissions;
        std::function<void(const Path&)> reveal;
        std::function<void(SystemSettingsLauncher::Pane)> openPane;
        std::function<void(const QString&)> say; ///< above the screen
    };

    MacScreens(OpenMac& mac, Actions actions);

    LeftoversScreen& leftovers() { return *leftovers_; }
    WorkScreen& work() { return *work_; }
    ReviewScreen& review() { return *review_; }
    ReportScreen& report() { return *report_; }

    /// Keys go to the screen that shows.
    void takeFocus() { current()->setFocus(); }
    void turnTo(QWidget& screen);
    void turnTo(Place place);
    /// Puts the cursor into the search field of the screen that shows.
    void search();
    /// Nothing is chosen or searched for any more.
    void startAfresh();

  private:
    void makePlaces();
    void makeStages();
    std::vector<ListScreen*> lists() const;
    QWidget* current() const;

    OpenMac& mac_;
    Actions actions_;
    ApplicationsScreen* applications_ = nullptr;
    LeftoversScreen* leftovers_ = nullptr;
    InstallersScreen* installers_ = nullptr;
    StartupScreen* startup_ = nullptr;
    HistoryScreen* history_ = nullptr;
    WorkScreen* work_ = nullptr;
    ReviewScreen* review_ = nullptr;
    ReportScreen* report_ = nullptr;
};

} // namespace tidwen
