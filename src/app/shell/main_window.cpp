#include "app/shell/main_window.h"

#include "app/models/undo_words.h"
#include "app/screens/onboarding/onboarding_sheet.h"
#include "app/screens/settings/settings_sheet.h"
#include "app/screens/welcome/gone_sheet.h"
#include "app/screens/welcome/welcome_screen.h"
#include "app/shell/drop_veil.h"
#include "app/shell/drop_words.h"
#include "app/shell/dropped_items.h"
#include "app/shell/kept_views.h"
#include "app/shell/open_mac.h"
#include "app/shell/standing_services.h"
#include "app/shell/system_chooser.h"
#include "app/style/metrics.h"
#include "app/widgets/return_key.h"
#include "app/widgets/text_sheet.h"
#include "app/widgets/words.h"
#include "base/message.h"
#include "base/path.h"
#include "platform/workspace.h"
#include "removal/flow_types.h"
#include "settings/recent_volumes.h"
#include "system/permissions_model.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QStringList>
#include <QTimer>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr int longestToFirstPaint = 300; ///< milliseconds; a window behind others is not painted
constexpr int quickOpening = 400;        ///< milliseconds, after which it is said what one waits for

/// Never as a move: whoever offers one deletes its file when it was taken. Where no copy is offered either,
/// the drop is answered with nothing.
void takeAsCopy(QDropEvent& event) {
    event.setDropAction(event.possibleActions().testFlag(Qt::CopyAction) ? Qt::CopyAction : Qt::IgnoreAction);
    event.accept();
}

} // namespace

MainWindow::MainWindow(Services services)
    : services_(services),
      texts_(services.language.texts()),
      appearance_(services.own.settings().preferences().appearance),
      speaking_(services.language.changed.connect([this] {
          // Later: what is made anew may be the control that changed the setting.
          QMetaObject::invokeMethod(
              this, [this] { speakAnew(); }, Qt::QueuedConnection);
      })),
      left_(services.main) {
    returnKey::guard();
    setWindowTitle(text("window.title"));
    // Large texts make it larger, but never so large that its buttons lie beside the screen.
    const auto most = screen()->availableSize();
    setMinimumSize(QSize(scaled(800), scaled(560)).boundedTo(most));
    resize(QSize(scaled(1080), scaled(720)).boundedTo(most));
    setAcceptDrops(true);
    makeChooser();
    makeMenus();
    veil_ = new DropVeil(this);
    settingsChanged_ = services_.own.settings().changed.connect([this] {
        if (mac_) mac_->session().reloadSettings();
    });
}

/// Sheets and the view refer to the Mac, so they go first.
MainWindow::~MainWindow() {
    standing_.reset();
    presence_.reset();
    clearContent();
}

/// What asks something over the screen refers to it, and is not cancelled, which would be an answer.
void MainWindow::clearContent() {
    while (auto* sheet = findChild<QWidget*>(QStringLiteral("sheet"), Qt::FindDirectChildrenOnly))
        delete sheet; // and what it asks itself
    delete takeCentralWidget();
    welcome_ = nullptr;
    view_ = nullptr;
}

void MainWindow::makeChooser() {
    chooser_ = new SystemChooser(this,
                                 {services_.opener, RecentVolumes(services_.own.host().defaults()), texts_,
                                  services_.main, services_.background},
                                 {[this] { return mayLeave(); }, [this](const auto& words) { begin(words); },
                                  [this](auto opened) { take(std::move(opened)); },
                                  [this](const auto& why) { refuse(why); }});
}

void MainWindow::makeMenus() {
    const auto add = [this](QMenu& menu, const char* key, const QKeySequence& keys, auto act) {
        auto* action = menu.addAction(text(key));
        action->setShortcut(keys);
        connect(action, &QAction::triggered, this, act);
        return action;
    };
    auto* file = menuBar()->addMenu(text("window.menu.file"));
    add(*file, "window.menu.open", QKeySequence::Open, [this] { chooser_->chooseVolume(); });
    add(*file, "window.menu.sample", {}, [this] { openSample(); });
    add(*file, "window.menu.sampleFolder", {}, [this] { chooser_->chooseSampleFolder(); });
    file->addSeparator();
    add(*file, "window.menu.settings", QKeySequence(Qt::CTRL | Qt::Key_Comma), [this] {
        openSettings();
    })->setMenuRole(QAction::PreferencesRole);
    add(*file, "window.menu.closeWindow", QKeySequence::Close, [this] { close(); });
    add(*file, "window.menu.quit", QKeySequence::Quit, [this] { quit(); });
    auto* go = menuBar()->addMenu(text("window.menu.go"));
    const auto whenOpen = [this](auto act) {
        return [this, act] {
            if (view_ && !isAsking()) act(*view_);
        };
    };
    int number = Qt::Key_1;
    for (const auto& [place, key] :
         {std::pair(Place::applications, "window.applications"),
          std::pair(Place::leftovers, "window.leftovers"), std::pair(Place::installers, "installers.title"),
          std::pair(Place::startupItems, "startup.title"), std::pair(Place::history, "window.history")})
        add(*go, key, QKeySequence(Qt::CTRL | static_cast<Qt::Key>(number++)),
            whenOpen([place = place](MacView& view) { view.go(place); }));
    go->addSeparator();
    add(*go, "window.menu.search", QKeySequence::Find, whenOpen([](MacView& view) { view.search(); }));
    add(*go, "window.menu.rescan", QKeySequence(Qt::CTRL | Qt::Key_R),
        whenOpen([](MacView& view) { view.lookAgain(); }));
    auto* help = menuBar()->addMenu(text("window.menu.help"));
    add(*help, "window.menu.onboarding", {}, [this] { openOnboarding(); });
}

/// Null unless the running Mac is open: a volume asks for no permission.
PermissionsModel* MainWindow::ownPermissions() {
    return mac_ && mac_->isRunningMac() ? &mac_->session().models().permissions() : nullptr;
}

std::function<void(SystemSettingsLauncher::Pane)> MainWindow::paneOpener() {
    return [this](auto pane) {
        if (view_) view_->openPane(pane);
    };
}

/// What lies under a question must not change before it is answered.
bool MainWindow::isAsking() const {
    return findChild<QWidget*>(QStringLiteral("sheet"), Qt::FindDirectChildrenOnly);
}

void MainWindow::openSettings() {
    if (isAsking()) return;
    SettingsSheet::MacFacts facts{ownPermissions(), {}, paneOpener()};
    if (mac_) facts.installed = mac_->session().models().homeGrid().apps();
    settings_ = new SettingsSheet(this, services_.own, std::move(facts), texts_);
    settings_->open();
}

void MainWindow::openOnboarding() {
    if (isAsking()) return;
    onboarding_ = new OnboardingSheet(this, {services_.own, ownPermissions(), paneOpener()}, texts_);
    onboarding_->open();
}

void MainWindow::showWelcome() {
    welcome_ = new WelcomeScreen(texts_, {[this] { chooser_->chooseVolume(); }, [this] { openSample(); }});
    setCentralWidget(welcome_);
}

void MainWindow::open(const std::filesystem::path& folder, const std::optional<std::string>& home) {
    chooser_->open(folder, home);
}

void MainWindow::openSample() {
    chooser_->openSample();
}

void MainWindow::openRunning(const MacOpener::OpenMac& running) {
    chooser_->openRunning(running);
}

/// A Mac that was asked for is mostly there before anybody could read that it is being opened.
void MainWindow::begin(const QString& words) {
    opening_ = words;
    if (view_) return;
    if (welcome_) return showOpening();
    QTimer::singleShot(quickOpening, this, [this] {
        if (!opening_ || view_) return;
        if (!welcome_) showWelcome();
        showOpening();
    });
}

void MainWindow::showOpening() {
    welcome_->setBusy(opening_.has_value());
    welcome_->say(opening_.value_or(QString()));
}

void MainWindow::showEvent(QShowEvent* event) {
    if (!view_ && !welcome_ && !opening_) showWelcome();
    QMainWindow::showEvent(event);
}

/// A Mac that could not be opened leaves the one that is open as it is.
void MainWindow::refuse(const QString& why) {
    opening_.reset();
    if (!view_) {
        if (!welcome_) showWelcome();
        welcome_->setBusy(false);
        welcome_->say(why);
    } else if (gone_ && !why.isEmpty()) { // above the screen it would lie under that notice
        openTextSheet(this, text("window.gone.another"), {why}, text("permissions.doneButton"));
    } else if (view_ && !why.isEmpty()) {
        view_->say(why);
    }
}

void MainWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    if (!std::exchange(wasPainted_, true)) QTimer::singleShot(0, this, [this] { takeArrived(); });
}

void MainWindow::takeArrived() {
    wasPainted_ = true;
    if (arrived_) take(*std::exchange(arrived_, std::nullopt));
}

/// The screens of a Mac take longer to make than the window itself, which is seen first.
void MainWindow::take(MacOpener::Opened opened) {
    if (isVisible() && !wasPainted_) {
        arrived_ = std::move(opened);
        QTimer::singleShot(longestToFirstPaint, this, [this] { takeArrived(); });
        return;
    }
    opening_.reset();
    presence_.reset();
    standing_.reset();
    clearContent();
    left_.add(std::move(mac_));
    mac_ = std::make_unique<OpenMac>(std::move(opened), services_.main);
    showView();
    view_->begin();
    followPresence();
    if (mac_->isRunningMac()) stand();
    if (!waitingFiles_.empty()) view_->takeDropped(std::exchange(waitingFiles_, {}));
    const auto& preferences = services_.own.settings().preferences();
    if (mac_->isRunningMac() && !preferences.hasCompletedOnboarding.get()) openOnboarding();
}

void MainWindow::showView() {
    view_ = new MacView(*mac_, services_.background, {chooser_->menu(), [this] { openSettings(); }});
    setCentralWidget(view_);
}

void MainWindow::stand() {
    const auto lookAt = [this](const std::vector<Path>& bundles) { view_->lookAt(bundles); };
    const auto say = [this](const std::vector<Message>& messages) {
        QStringList lines;
        for (const auto& message : messages)
            lines << shown(texts_.text(message));
        view_->say(firstLines(lines, mostNoticeLines, texts_));
    };
    standing_ = std::make_unique<StandingServices>(
        mac_->session(), services_.bundle, StandingServices::Window{[this] { present(); }, lookAt, say});
}

void MainWindow::takeFiles(std::vector<std::string> hostPaths) {
    present();
    if (view_)
        view_->takeDropped(std::move(hostPaths));
    else
        waitingFiles_.insert(waitingFiles_.end(), hostPaths.begin(), hostPaths.end());
}

void MainWindow::present() {
    show();
    raise();
    activateWindow();
}

void MainWindow::comeBack() {
    if (standing_) standing_->refresh();
    if (mac_ && !isVisible()) show();
}

bool MainWindow::isOpening() const {
    return opening_.has_value();
}

bool MainWindow::isNeeded() const {
    return isVisible() || (standing_ && standing_->isNeeded());
}

/// In another language everything that shows is made anew, over the models as they stand.
void MainWindow::speakAnew() {
    const auto settings = settings_ ? std::optional(settings_->tab()) : std::nullopt;
    menuBar()->clear();
    makeMenus();
    if (view_) {
        const auto kept = KeptViews::of(*view_);
        auto handover = view_->handOver();
        clearContent();
        mac_->arrange();
        showView();
        view_->takeOver(std::move(handover));
        kept.giveTo(*view_);
        followPresence();
    } else if (welcome_) {
        clearContent();
        showWelcome();
        showOpening();
    }
    if (!settings) return;
    openSettings();
    settings_->go(*settings);
}

void MainWindow::followPresence() {
    auto* presence = mac_->presence();
    if (!presence) return;
    presence_ = presence->isThere.observe([this](bool isThere) { showPresence(isThere); });
    if (!presence->isThere.get()) showPresence(false); // in the new language, too
}

/// The disk of the volume was taken away, or is back. What the window shows stays as it is.
void MainWindow::showPresence(bool isThere) {
    if (gone_) gone_->close();
    if (isThere) return;
    gone_ = openGoneSheet(this, shown(mac_->name()), texts_, chooser_->menu(),
                          [this] { mac_->presence()->look([this] { reopen(); }); });
}

/// Another folder lies where the volume was: another disk, or the same one connected anew. It is opened as
/// any other; what was open is left.
void MainWindow::reopen() {
    if (isOpening()) return; // asked for again, it would begin anew and be there later
    if (const auto folder = mac_->session().mac().volume; folder && mayLeave()) open(*folder);
}

/// While something is moved the Mac must stay open; says so.
bool MainWindow::mayLeave() {
    const bool isBusy = mac_ && mac_->isBusy();
    if (isBusy) view_->say(text("window.system.busy"));
    return !isBusy;
}

/// Also without a window, and although the Trash is watched.
void MainWindow::quit() {
    quits_ = true;
    close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    const bool quits = std::exchange(quits_, false);
    // The Trash watch goes on without a window.
    QApplication::setQuitOnLastWindowClosed(quits || !standing_ || !standing_->isNeeded());
    if (!mac_ || !mac_->isBusy()) {
        event->accept();
        if (quits) QMetaObject::invokeMethod(qApp, &QApplication::quit, Qt::QueuedConnection);
        return;
    }
    event->ignore();
    view_->askToClose({[this] { hide(); }, [this, quits] { quits ? quit() : void(close()); },
                       [this] { QTimer::singleShot(0, this, [this] { endHidden(); }); }});
}

/// What went on without a window is done: ends too, unless there is something to tell.
void MainWindow::endHidden() {
    if (isVisible()) return;
    const auto* ended = std::get_if<stage::Report>(&mac_->flow().stage());
    const auto leavesRest = [](const auto& undo) { return undo && !isAsBefore(*undo); };
    const auto& history = mac_->session().models().history();
    const bool hasFailed =
        mac_->flow().errorMessage() || history.error.get() || (ended && !ended->report.failures().empty());
    const bool isPartlyUndone = leavesRest(mac_->flow().undoReport()) || leavesRest(history.lastUndo.get())
                                || leavesRest(mac_->chores().undoReport());
    if (hasFailed || isPartlyUndone) return present();
    if (QApplication::quitOnLastWindowClosed()) QApplication::quit();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    const bool isBack = event->type() == QEvent::ActivationChange && isActiveWindow();
    if (isBack && view_ && mac_->chores().isDone()) view_->comeBack();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const auto paths = droppedPaths(*event->mimeData());
    if (!view_ || paths.empty()) return;
    veil_->show(wordsForDrop(*mac_, paths));
    takeAsCopy(*event);
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    veil_->hide();
}

void MainWindow::dropEvent(QDropEvent* event) {
    veil_->hide();
    if (!view_) return;
    takeAsCopy(*event);
    view_->takeDropped(droppedPaths(*event->mimeData()));
}

QString MainWindow::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen
