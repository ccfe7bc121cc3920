#pragma once

#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
#include "app/shell/left_macs.h"
#include "app/shell/mac_opener.h"
#include "app/shell/mac_view.h"
#include "app/shell/open_mac.h"
#include "app/style/appearance.h"
#include "base/executor.h"
#include "base/observable.h"
#include "base/texts.h"
#include "platform/workspace.h"
#include "program/resources.h"
#include "system/permissions_model.h"
#include "system/request_inbox.h"

#include <QMainWindow>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

class DropVeil;
class SettingsSheet;
class Sheet;
class StandingServices;
class SystemChooser;
class WelcomeScreen;

/// The window: the Mac that is open, or the choice of one.
class MainWindow final : public QMainWindow {
  public:
    /// What is passed outlives it.
    struct Services {
        MacOpener& opener;
        SpokenLanguage& language;
        Executor& main;
        Executor& background; ///< asks disks, so none of its work waits for another
        OwnServices& own;
        OwnBundle bundle = {}; ///< that the program runs from
    };
    explicit MainWindow(Services services);
    ~MainWindow() override;

    void open(const std::filesystem::path& folder, const std::optional<std::string>& home = {});
    void openSample();
    void openRunning(const MacOpener::OpenMac& running);
    void openSettings();
    /// What is told at the first start.
    void openOnboarding();
    /// Files of this machine, as dropped; those that come while a Mac is being opened wait for it.
    void takeFiles(std::vector<std::string> hostPaths);
    void present();
    /// The program came to the front.
    void comeBack();
    /// Until a Mac that was asked for is there, or cannot be.
    bool isOpening() const;
    /// It is seen, or goes on watching the Trash without being seen.
    bool isNeeded() const;
    OpenMac* mac() { return mac_.get(); }
    MacView* view() { return view_; }

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    void makeChooser();
    void makeMenus();
    void speakAnew();
    void showView();
    void clearContent();
    void begin(const QString& words);
    void showOpening();
    void refuse(const QString& why);
    void take(MacOpener::Opened opened);
    void takeArrived();
    void stand();
    void showWelcome();
    void followPresence();
    void showPresence(bool isThere);
    void reopen();
    void quit();
    bool mayLeave();
    bool isAsking() const;
    void endHidden();
    PermissionsModel* ownPermissions();
    std::function<void(SystemSettingsLauncher::Pane)> paneOpener();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    Services services_;
    const Texts& texts_;
    AppearanceFollower appearance_;
    Subscription speaking_;
    SystemChooser* chooser_ = nullptr;
    WelcomeScreen* welcome_ = nullptr;
    DropVeil* veil_ = nullptr;
    QPointer<SettingsSheet> settings_;
    QPointer<Sheet> onboarding_;
    QPointer<Sheet> gone_;
    LeftMacs left_;
    std::unique_ptr<OpenMac> mac_;
    std::optional<QString> opening_; ///< what is said while a Mac is being opened
    bool wasPainted_ = false;
    std::optional<MacOpener::Opened> arrived_;   ///< before it was painted for the first time
    MacView* view_ = nullptr;                    ///< of `mac_`, and goes before it
    std::unique_ptr<StandingServices> standing_; ///< of the Mac that the program runs on
    std::vector<std::string> waitingFiles_;
    Subscription settingsChanged_, presence_;
    bool quits_ = false; ///< the program, and not only the window, is to be closed
};

} // namespace tidwen
