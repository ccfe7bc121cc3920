#pragma once

#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
#include "app/shell/mac_opener.h"
#include "app/shell/mac_view.h"
#include "app/style/appearance.h"
#include "program/resources.h"

#include <QMainWindow>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class QMenu;

namespace tidwen {

class DropVeil;
class SettingsSheet;
class StandingServices;
class WelcomeScreen;

/// The window: the Mac that is open, or the choice of one.
class MainWindow final : public QMainWindow {
  public:
    /// What is passed outlives it.
    struct Services {
        MacOpener& opener;
        SpokenLanguage& language;
        Executor& main;
        Executor& background;
        OwnServices& own;
        OwnBundle bundle = {}; ///< that the program runs from
    };
    explicit MainWindow(Services services);
    ~MainWindow() override;

    void open(const std::filesystem::path& folder, const std::optional<std::string>& home = {});
    void openSample();
    void openSettings();
    void openRunning(const RunningMac::Open& running);
    /// Files of this machine, as dropped; those that come while a Mac is being opened wait for it.
    void takeFiles(std::vector<std::string> hostPaths);
    void present();
    /// The program came to the front.
    void comeBack();
    OpenMac* mac() { return mac_.get(); }
    MacView* view() { return view_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void makeMenus();
    void speakAnew();
    void showView();
    void clearContent();
    void chooseVolume();
    void take(tl::expected<MacOpener::Opened, Message> opened);
    void stand();
    void showWelcome();
    bool isBusy();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    Services services_;
    const Texts& texts_;
    AppearanceFollower appearance_;
    Subscription speaking_;
    QMenu* systems_ = nullptr;
    WelcomeScreen* welcome_ = nullptr;
    DropVeil* veil_ = nullptr;
    QPointer<SettingsSheet> settings_;
    Subscription settingsChanged_;
    std::unique_ptr<OpenMac> mac_;
    MacView* view_ = nullptr;                    ///< of `mac_`, and goes before it
    std::unique_ptr<StandingServices> standing_; ///< of the Mac that the program runs on
    std::vector<std::string> waitingFiles_;
};

} // namespace tidwen
