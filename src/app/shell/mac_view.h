#pragma once

#include "app/shell/desktop_requests.h"
#include "app/shell/mac_questions.h"
#include "app/shell/open_mac.h"
#include "app/shell/place.h"
#include "base/executor.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "platform/workspace.h"
#include "removal/flow_types.h"
#include "scan/applications/app_target.h"

#include <QWidget>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QMenu;

namespace tidwen {

class FlowDisplay;
class MacScreens;
class SaidAbove;
class Sidebar;

/// One open Mac: its places at the side, and the screen at which the flow of a removal stands. Goes from
/// place to place and follows the models; what the flow shows is `FlowDisplay`, the screens are `MacScreens`,
/// what is asked is `MacQuestions`.
class MacView final : public QWidget {
  public:
    struct Menus {
        QMenu* systems; ///< offers other Macs to open
        std::function<void()> openSettings;
    };

    /// What stands in a view alone, and goes to the one that takes its place in another language.
    struct Handover {
        Place place = Place::applications;
        std::size_t leftovers = 0; ///< that the last sweep found
        bool isErrorDismissed = false;
        MacQuestions::Open questions;
    };

    MacView(OpenMac& mac, Executor& background, const Menus& menus);
    ~MacView() override;

    /// Reads what was never read: once for a Mac.
    void begin();
    Handover handOver() const;
    void takeOver(Handover handover);

    void go(Place place);
    void search();
    /// Reads anew what is on the screen.
    void lookAgain();
    /// The window is used again: another process may have removed something, or put it back.
    void comeBack();
    void lookAt(const std::vector<Path>& bundles, RemovalMode mode = RemovalMode::uninstall);
    /// Files of this machine; those that lie on the volume are looked at.
    void takeDropped(std::vector<std::string> hostPaths);
    void openPane(SystemSettingsLauncher::Pane pane) { desktop_.openPane(pane); }
    /// Words above the screen, until they are dismissed or another screen comes. A search does not take them
    /// away.
    void say(const QString& words);
    /// A removal or undo runs while the window is to be closed: asks what becomes of it.
    void askToClose(const MacQuestions::Closing& closing) { questions_.askToClose(closing); }

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void makeSidebar(const Menus& menus);
    void makeScreens();
    void followFlow();
    void followModels();
    void followPermissions();
    void follow(FlowChange change);
    void showCounts();
    void showStage();
    /// Reads what a place shows, as it was never read or may have changed.
    void load(Place place);
    void sweep();
    void rescan();
    void leaveReport();
    /// What is open or blocked while something runs.
    void followWork();
    void showPermissions(AppTarget app);
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    OpenMac& mac_;
    Executor& background_;
    const Texts& texts_;
    MacQuestions questions_;
    DesktopRequests desktop_;
    Sidebar* sidebar_ = nullptr;
    SaidAbove* said_ = nullptr;
    MacScreens* screens_ = nullptr;
    std::unique_ptr<FlowDisplay> flowDisplay_;
    std::size_t leftoverCount_ = 0;     ///< found by the last sweep
    Place place_ = Place::applications; ///< where one is, or comes back to
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
