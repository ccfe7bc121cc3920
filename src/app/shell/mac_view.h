#pragma once

#include "app/screens/removing/work_screen.h"
#include "app/shell/mac_questions.h"
#include "app/shell/open_mac.h"
#include "app/shell/sidebar.h"
#include "base/executor.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/workspace.h"
#include "removal/flow_types.h"
#include "scan/applications/app_target.h"

#include <QWidget>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

class QBoxLayout;
class QMenu;
class QStackedWidget;

namespace tidwen {

class ApplicationsScreen;
class HistoryScreen;
class InstallersScreen;
class LeftoversScreen;
class ReportScreen;
class ReviewScreen;
class StartupScreen;

/// One open Mac: its places at the side, and the screen at which the flow of a removal stands.
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
    void lookAt(const std::vector<Path>& bundles);
    /// Files of this machine; those that lie on the volume are looked at.
    void takeDropped(std::vector<std::string> hostPaths);
    /// What dropping these files would do, or why nothing. By their names alone.
    QString wordsForDrop(const std::vector<std::string>& hostPaths) const;
    void openPane(SystemSettingsLauncher::Pane pane);
    /// Words above the screen, until they are dismissed or another screen comes. A search does not take them
    /// away.
    void say(const QString& words);
    /// A removal or undo runs while the window is to be closed: asks what becomes of it.
    void askToClose(const MacQuestions::Closing& closing) { questions_.askToClose(closing); }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void makeScreens();
    QString whyNoLook() const;
    bool isRunning(const AppTarget& app) const;
    std::vector<WorkScreen::Application> lookedAt() const;
    void follow();
    void showCounts();
    void follow(FlowChange change);
    void showStage();
    void show(QWidget* screen);
    void showHome();
    /// Reads what a place shows, as it was never read or may have changed.
    void load(Place place);
    void sweep();
    void rescan();
    void showWork(const Stage& stage);
    void showError();
    /// What is open or blocked while something runs.
    void followWork();
    void showPermissions(AppTarget app);
    void reveal(const Path& item);
    void askDesktop(const std::function<Workspace::Result(Workspace&)>& ask);
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    OpenMac& mac_;
    Executor& background_;
    const Texts& texts_;
    MacQuestions questions_;
    Sidebar* sidebar_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    QBoxLayout* errors_ = nullptr;
    std::optional<std::string> shownError_;
    std::size_t shownStage_ = std::variant_npos;
    QStackedWidget* screens_ = nullptr;
    std::size_t leftoverCount_ = 0;     ///< found by the last sweep
    Place place_ = Place::applications; ///< where one is, or comes back to
    ApplicationsScreen* applications_ = nullptr;
    LeftoversScreen* leftovers_ = nullptr;
    InstallersScreen* installers_ = nullptr;
    StartupScreen* startup_ = nullptr;
    HistoryScreen* history_ = nullptr;
    WorkScreen* work_ = nullptr;
    ReviewScreen* review_ = nullptr;
    ReportScreen* report_ = nullptr;
    std::vector<Path> lookedAt_;   ///< the bundles of the latest search
    bool beginsWithReset_ = false; ///< the review that is being prepared
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
