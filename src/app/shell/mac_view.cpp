#include "app/shell/mac_view.h"

#include "app/screens/applications/applications_screen.h"
#include "app/screens/history/history_screen.h"
#include "app/screens/installers/installers_screen.h"
#include "app/screens/leftovers/leftovers_screen.h"
#include "app/screens/removing/work_screen.h"
#include "app/screens/report/report_screen.h"
#include "app/screens/review/review_screen.h"
#include "app/screens/startup/startup_screen.h"
#include "app/shell/activity_strip.h"
#include "app/shell/dropped_items.h"
#include "app/shell/recovery_banner.h"
#include "app/style/metrics.h"
#include "app/widgets/list_screen.h"
#include "app/widgets/motion.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/background_step.h"
#include "base/executor.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/workspace.h"
#include "program/host_paths.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "removal/flow_types.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/trace.h"
#include "system/permissions_model.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>

#include <algorithm>
#include <string>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

constexpr int foldsSidebarBelow = 860;

/// Leftovers have no stage of their own before they are looked for.
Stage homeStage(Place place) {
    switch (place) {
    case Place::installers:
        return stage::Installers{};
    case Place::startupItems:
        return stage::StartupItems{};
    case Place::history:
        return stage::History{};
    case Place::applications:
    case Place::leftovers:
        break;
    }
    return stage::Idle{};
}

SystemSettingsLauncher::Pane launcherPane(SettingsPane pane) {
    using Pane = SystemSettingsLauncher::Pane;
    switch (pane) {
    case SettingsPane::fullDiskAccess:
        return Pane::fullDiskAccess;
    case SettingsPane::loginItemsAndExtensions:
        return Pane::loginItemsAndExtensions;
    case SettingsPane::privacyAndSecurity:
        break;
    }
    return Pane::privacyAndSecurity;
}

} // namespace

MacView::MacView(OpenMac& mac, Executor& background, const Menus& menus)
    : mac_(mac),
      background_(background),
      texts_(mac.system().texts),
      questions_(*this, mac, [this](const QString& words) { say(words); }) {
    auto* layout = parts::row(this);
    sidebar_ = new Sidebar(
        texts_,
        {shown(mac.name()), mac.isRunningMac()
                                ? shown(mac.userName())
                                : text("window.system.volume %@", {shown(mac.userName()).toStdString()})},
        menus.systems, [this](Place place) { go(place); }, menus.openSettings);
    layout->addWidget(sidebar_);
    auto* main = parts::column(nullptr);
    layout->addLayout(main, 1);
    errors_ = parts::column(nullptr, scaled(6));
    notices_ = parts::column(nullptr, scaled(6));
    main->addWidget(new ActivityStrip(mac.session().models(), texts_, mac.system().user));
    main->addWidget(new RecoveryBanner(mac.chores(), texts_, mac.isRunningMac(),
                                       [this](const Path& item) { reveal(item); }));
    main->addLayout(errors_);
    main->addLayout(notices_);
    screens_ = new QStackedWidget;
    connect(screens_, &QStackedWidget::currentChanged, this, [this] { fadeIn(*screens_); });
    main->addWidget(screens_, 1);
    makeScreens();
    follow();
    showCounts();
    showStage();
}

void MacView::begin() {
    screens_->currentWidget()->setFocus();
    mac_.session().models().homeGrid().load();
    mac_.chores().run();
}

MacView::~MacView() = default;

MacView::Handover MacView::handOver() const {
    return {.place = place_, .leftovers = leftoverCount_, .questions = questions_.open()};
}

void MacView::takeOver(Handover handover) {
    place_ = handover.place;
    leftoverCount_ = handover.leftovers;
    showCounts();
    showStage();
    screens_->currentWidget()->setFocus();
    questions_.reopen(std::move(handover.questions));
}

void MacView::makeScreens() {
    auto& session = mac_.session();
    auto& flow = mac_.flow();
    const auto& system = mac_.system();
    const auto showItem = [this](const Path& item) { reveal(item); };
    applications_ = new ApplicationsScreen(
        {session.models().homeGrid(), session.preferences(), session.protectedApps(), session.tags(),
         mac_.icons(), texts_, system.clock, showItem},
        [this](const auto& bundles, RemovalMode mode) {
            lookAt(bundles);
            beginsWithReset_ = mode == RemovalMode::reset;
        },
        [this](const InstalledApp& app) {
            showPermissions({.bundleURL = app.url, .bundleID = app.bundleID, .name = app.name});
        });
    std::function<void(SettingsPane)> openPaneByHand; // a volume has none
    if (mac_.isRunningMac()) openPaneByHand = [this](SettingsPane pane) { openPane(launcherPane(pane)); };
    history_ =
        new HistoryScreen(session.models().history(), texts_, system.user, mac_.isRunningMac(), showItem);
    work_ = new WorkScreen(texts_, mac_.icons(), system.user, [this] { mac_.flow().stop(); });
    review_ = new ReviewScreen(flow, mac_.icons(), texts_, system.user,
                               {[this] { questions_.confirm(); }, [this] { rescan(); }, showItem,
                                [this](const AppTarget& app) { showPermissions(app); }, openPaneByHand,
                                [this] {
                                    using Status = FullDiskAccessProbe::Status;
                                    auto& permissions = mac_.session().models().permissions();
                                    return permissions.fullDiskAccess.get() == Status::granted;
                                },
                                [this](const AppTarget& app) { return isRunning(app); }});
    leftovers_ = new LeftoversScreen(flow, texts_, system.user,
                                     {[this] { sweep(); }, [this] { questions_.confirm(); }, showItem});
    using Pane = SystemSettingsLauncher::Pane;
    const bool isVolume = !mac_.isRunningMac(); // which has no settings to open
    installers_ = new InstallersScreen(
        session.models().installers(), mac_.icons(), texts_,
        {[this] { questions_.confirmInstallers(); }, showItem,
         text(isVolume ? "leftovers.again" : "installers.unreadable.action"),
         [this, isVolume] { isVolume ? load(Place::installers) : openPane(Pane::fullDiskAccess); }});
    startup_ = new StartupScreen(session.models().startupItems(), mac_.icons(), texts_,
                                 {[this] { questions_.confirmStartupItems(); }, showItem,
                                  [this] { openPane(Pane::loginItemsAndExtensions); }});
    std::function<void()> openPrivacy;
    if (mac_.isRunningMac()) openPrivacy = [this] { openPane(Pane::privacyAndSecurity); };
    report_ = new ReportScreen(flow, texts_, showItem, std::move(openPrivacy));
    for (QWidget* screen : std::initializer_list<QWidget*>{applications_, leftovers_, installers_, startup_,
                                                           history_, work_, review_, report_})
        screens_->addWidget(screen);
}

void MacView::follow() {
    auto& flow = mac_.flow();
    auto& models = mac_.session().models();
    following_.push_back(flow.changed.connect([this](FlowChange change) { follow(change); }));
    following_.push_back(flow.progress.observe([this](const auto&) { showWork(mac_.flow().stage()); }));
    const auto count = [this](const auto&) { showCounts(); };
    following_.push_back(models.homeGrid().inventory.observe(count));
    following_.push_back(models.history().entries.observe(count));
    if (mac_.isRunningMac()) // a volume asks for no permission
        following_.push_back(models.permissions().fullDiskAccess.observe([this](auto status) {
            sidebar_->warn(status == FullDiskAccessProbe::Status::denied
                               ? text("settings.permissions.fullDisk.denied")
                               : QString());
            if (status == FullDiskAccessProbe::Status::granted) review_->showGrantedAccess();
        }));
    following_.push_back(models.installers().result.observe(count));
    following_.push_back(models.startupItems().result.observe(count));
    following_.push_back(mac_.chores().changed.connect([this](ChoresChange change) {
        followWork();
        if (mac_.isBusy() || change == ChoresChange::notices) return;
        mac_.session().models().history().load();
        mac_.session().models().homeGrid().load();
    }));
    following_.push_back(models.history().busyEntryID.observe([this](const auto& busy) {
        followWork();
        if (!busy) mac_.session().models().homeGrid().load(); // applications may be back
    }));
    following_.push_back(models.history().entries.observe([this](const auto& entries) {
        for (const auto& entry : entries)
            if (entry.items() == RemovalHistoryEntry::Items::putBack)
                mac_.chores().dismissRecoveryNotice(entry.root);
    }));
    following_.push_back(flow.sweep().changed.connect([this](SweepChange change) {
        const bool isSearching = std::holds_alternative<stage::Scanning>(mac_.flow().stage());
        if (isSearching) return showWork(mac_.flow().stage());
        if (change == SweepChange::finds) showStage();
    }));
    // Later: where the report leads to may be left again at once.
    flow.onReportDismissed = [this] {
        applications_->startAfresh();
        for (ListScreen* screen : std::initializer_list<ListScreen*>{leftovers_, installers_, startup_})
            screen->forgetSearch();
        screens_->currentWidget()->setFocus();
        mac_.session().models().homeGrid().load();
        mac_.session().models().history().load();
        QMetaObject::invokeMethod(
            this, [this] { load(place_); }, Qt::QueuedConnection);
    };
}

void MacView::showCounts() {
    auto& models = mac_.session().models();
    sidebar_->setCount(Place::applications, models.homeGrid().inventory.get().count);
    sidebar_->setCount(Place::leftovers, leftoverCount_);
    sidebar_->setCount(Place::installers, models.installers().result.get().files.size());
    sidebar_->setCount(Place::startupItems, models.startupItems().result.get().items.size());
    sidebar_->setCount(Place::history, models.history().entries.get().size());
}

void MacView::go(Place place) {
    auto& flow = mac_.flow();
    const bool isThere = place == Place::leftovers && std::holds_alternative<stage::Orphans>(flow.stage());
    if (mac_.isBusy() || isThere) return;
    if (std::holds_alternative<stage::Scanning>(flow.stage())) flow.cancelScan();
    place_ = place;
    flow.close();
    flow.show(homeStage(place));
    if (place == Place::history) mac_.session().models().history().forgetOutcome();
    load(place);
}

void MacView::load(Place place) {
    auto& models = mac_.session().models();
    switch (place) {
    case Place::leftovers:
        if (mac_.flow().sweep().startedAt()) mac_.flow().scanOrphans(); // the first time one is asked
        return;
    case Place::installers:
        return models.installers().load();
    case Place::startupItems:
        return models.startupItems().load();
    case Place::history:
        return models.history().load();
    case Place::applications:
        return; // kept up to date by itself
    }
}

void MacView::lookAgain() {
    const auto& stage = mac_.flow().stage();
    if (std::holds_alternative<stage::Review>(stage)) return rescan();
    if (place_ == Place::leftovers) return sweep();
    if (place_ == Place::applications) return mac_.session().models().homeGrid().load();
    load(place_);
}

void MacView::comeBack() {
    if (mac_.isBusy()) return;
    const auto held = [&history = mac_.session().models().history()] {
        std::vector<std::pair<Path, int>> runs;
        runs.reserve(history.entries.get().size());
        for (const auto& entry : history.entries.get())
            runs.emplace_back(entry.root, entry.pendingMoves);
        return runs;
    };
    mac_.session().models().history().load(HistoryModel::Sizes::measured,
                                           [view = QPointer(this), before = held(), held] {
                                               if (!view) return;
                                               auto& grid = view->mac_.session().models().homeGrid();
                                               held() == before ? grid.refreshRunning() : grid.load();
                                           });
}

void MacView::sweep() {
    if (mac_.isBusy()) return;
    if (std::holds_alternative<stage::Orphans>(mac_.flow().stage())) mac_.flow().close();
    mac_.flow().scanOrphans();
}

void MacView::rescan() {
    std::vector<Path> bundles;
    for (const auto& group : mac_.flow().choice().findings().groups())
        bundles.push_back(group.target.bundleURL);
    lookAt(bundles);
}

void MacView::search() {
    if (screens_->currentWidget() == applications_) applications_->search();
    for (ListScreen* screen : std::initializer_list<ListScreen*>{leftovers_, installers_, startup_})
        if (screens_->currentWidget() == screen) screen->search();
    if (screens_->currentWidget() == review_) review_->search();
}

QString MacView::whyNoLook() const {
    if (mac_.isBusy()) return text("drop.busy");
    return std::holds_alternative<stage::Scanning>(mac_.flow().stage()) ? text("drop.scanning") : QString();
}

QString MacView::wordsForDrop(const std::vector<std::string>& hostPaths) const {
    if (auto why = whyNoLook(); !why.isEmpty()) return why;
    const auto bundles = std::ranges::count_if(hostPaths, looksLikeApplication);
    if (bundles == 0) return text("drop.noApplication");
    const auto isProtected = [&](const std::string& path) {
        const auto& apps = mac_.session().models().homeGrid().apps();
        return std::ranges::any_of(apps, [&](const InstalledApp& app) {
            return app.url.lastComponent() == Path(path).lastComponent()
                   && mac_.session().protectedApps().contains(app.bundleID);
        });
    };
    const auto kept = std::ranges::count_if(hostPaths, isProtected);
    auto words = text("drop.look %lld", {std::to_string(bundles)});
    if (kept > 0) words += QLatin1Char('\n') + text("drop.protected %lld", {std::to_string(kept)});
    return words;
}

bool MacView::isRunning(const AppTarget& app) const {
    return std::ranges::any_of(mac_.session().models().homeGrid().apps(), [&](const InstalledApp& each) {
        return each.bundleID == app.bundleID && each.usage && each.usage->isRunning;
    });
}

/// As the grid knows them; what it does not list yet by the name of its bundle.
std::vector<WorkScreen::Application> MacView::lookedAt() const {
    std::vector<WorkScreen::Application> result;
    result.reserve(lookedAt_.size());
    const auto& apps = mac_.session().models().homeGrid().apps();
    for (const auto& bundle : lookedAt_) {
        const auto known = std::ranges::find(apps, bundle, &InstalledApp::url);
        if (known != apps.end())
            result.push_back({known->name, known->bundleID, bundle});
        else
            result.push_back({bundle.lastComponent(), {}, bundle});
    }
    return result;
}

void MacView::lookAt(const std::vector<Path>& bundles) {
    beginsWithReset_ = false;
    auto& flow = mac_.flow();
    if (const auto why = whyNoLook(); !why.isEmpty()) return say(why);
    lookedAt_ = bundles;
    const bool isOver = std::holds_alternative<stage::Report>(flow.stage())
                        || std::holds_alternative<stage::Orphans>(flow.stage());
    if (isOver) flow.close();
    flow.loadTargets(bundles);
}

void MacView::takeDropped(std::vector<std::string> hostPaths) {
    inBackground(
        *this, alive_, background_, mac_.loop(),
        [volume = mac_.session().mac().volume, paths = std::move(hostPaths)] {
            std::vector<Path> bundles;
            bundles.reserve(paths.size());
            const HostPaths onVolume(volume);
            for (const auto& path : paths)
                if (auto found = onVolume.macPath(path)) bundles.push_back(std::move(*found));
            return bundles;
        },
        [](MacView& view, const std::vector<Path>& bundles) {
            if (bundles.empty())
                view.say(view.text("drop.elsewhere"));
            else
                view.lookAt(bundles);
        });
}

/// Only what the change is about.
void MacView::follow(FlowChange change) {
    const auto& stage = mac_.flow().stage();
    switch (change) {
    case FlowChange::stage:
    case FlowChange::listing:
        return showStage();
    case FlowChange::phase:
        return showWork(stage);
    case FlowChange::problems:
        return showError();
    case FlowChange::selection:
        showError(); // that of an earlier one is over
        if (std::holds_alternative<stage::Review>(stage)) review_->showSelection();
        if (std::holds_alternative<stage::Orphans>(stage)) leftovers_->refresh();
        return;
    case FlowChange::prompt:
        return followWork();
    case FlowChange::undo:
        showError();
        report_->update();
        return followWork();
    }
}

void MacView::showStage() {
    auto& flow = mac_.flow();
    const auto& stage = flow.stage();
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage)) {
        place_ = Place::leftovers;
        leftoverCount_ = 0;
        for (const auto& group : orphans->result->groups)
            leftoverCount_ += group.traces.size();
    }
    sidebar_->choose(place_);
    showError();
    // Also when it is over: the tree would point into findings that are gone.
    if (!std::holds_alternative<stage::Review>(stage) && flow.reviewTrees().empty()) review_->update();
    if (std::holds_alternative<stage::Review>(stage)) {
        review_->update();
        if (std::exchange(beginsWithReset_, false)) flow.setMode(RemovalMode::reset);
        show(review_);
    } else if (std::holds_alternative<stage::Orphans>(stage)) {
        showCounts();
        leftovers_->refresh();
        if (leftovers_->isReady()) showHome();
    } else if (std::holds_alternative<stage::Report>(stage)) {
        show(report_);
        report_->update();
    } else if (std::holds_alternative<stage::Scanning>(stage)
               || std::holds_alternative<stage::Removing>(stage)) {
        showWork(stage);
        show(work_);
    } else {
        leftovers_->refresh();
        showHome();
    }
    followWork();
}

void MacView::followWork() {
    sidebar_->setEnabled(!mac_.isBusy());
    questions_.follow();
}

/// Keys go to what is shown now.
void MacView::show(QWidget* screen) {
    if (screens_->currentWidget() == screen) return;
    screens_->setCurrentWidget(screen);
    screen->setFocus();
}

void MacView::showHome() {
    const auto screen = [this]() -> QWidget* {
        switch (place_) {
        case Place::leftovers:
            return leftovers_;
        case Place::installers:
            return installers_;
        case Place::startupItems:
            return startup_;
        case Place::history:
            return history_;
        case Place::applications:
            break;
        }
        return applications_;
    };
    show(screen());
}

void MacView::showWork(const Stage& stage) {
    const auto& step = mac_.flow().progress.get();
    const auto* scanning = std::get_if<stage::Scanning>(&stage);
    const bool isSearch = scanning && !scanning->name.empty();
    work_->showApplications(isSearch ? lookedAt() : std::vector<WorkScreen::Application>(),
                            isSearch ? scanning->name : std::string());
    if (scanning && scanning->name.empty()) {
        const auto& found = mac_.flow().sweep().snapshot();
        work_->show(
            {text("cli.orphans.progress"), text("confirm.cancelButton"),
             text("leftovers.found %lld %@", {std::to_string(found.totalCount), found.totalSizeText})},
            step);
    } else if (scanning)
        work_->show({text("scanning.title.plain"), text("confirm.cancelButton"),
                     text("scanning.application %@", {shown(scanning->name).toStdString()})},
                    step);
    else if (const auto* removing = std::get_if<stage::Removing>(&stage))
        work_->show({text("cli.remove.progress %@", {shown(removing->subject.text(texts_)).toStdString()}),
                     text("removing.stop"), text("removing.note")},
                    step);
}

namespace {

void addNotice(QBoxLayout& notices, const QString& words, const QString& dismiss) {
    notices.setContentsMargins(scaled(24), scaled(12), scaled(24), 0);
    notices.addWidget(makeNotice(NoticeTone::caution, {words, {}, dismiss}, [&notices] {
        parts::clear(notices);
        notices.setContentsMargins({});
    }));
}

} // namespace

/// Only what has changed: the phases of a search leave what is said as it is.
void MacView::showError() {
    const auto& flow = mac_.flow();
    const auto scanning = Stage(stage::Scanning{}).index();
    const auto before = std::exchange(shownStage_, flow.stage().index());
    if (before != shownStage_ && before != scanning && shownStage_ != scanning) {
        parts::clear(*notices_);
        notices_->setContentsMargins({});
    }
    auto error = flow.errorMessage();
    if (std::holds_alternative<stage::Report>(flow.stage())) error.reset(); // which says it itself
    if (std::exchange(shownError_, error) == error) return;
    parts::clear(*errors_);
    errors_->setContentsMargins({});
    if (error) addNotice(*errors_, shown(*error), text("window.dismiss"));
}

void MacView::say(const QString& words) {
    parts::clear(*notices_);
    addNotice(*notices_, words, text("window.dismiss"));
}

void MacView::showPermissions(AppTarget app) {
    questions_.showPermissions(std::move(app),
                               [this] { openPane(SystemSettingsLauncher::Pane::privacyAndSecurity); });
}

void MacView::reveal(const Path& item) {
    askDesktop([item](Workspace& workspace) { return workspace.reveal(item); });
}

void MacView::openPane(SystemSettingsLauncher::Pane pane) {
    askDesktop([pane](Workspace& workspace) { return workspace.openSettingsPane(pane); });
}

/// The desktop may take its time, so it is not asked on the main thread.
void MacView::askDesktop(const std::function<Workspace::Result(Workspace&)>& ask) {
    inBackground(
        *this, alive_, mac_.session().background(), mac_.loop(),
        [&workspace = mac_.system().workspace, ask] { return ask(workspace); },
        [](MacView& view, const Workspace::Result& result) {
            if (!result) view.say(QString::fromStdString(view.texts_.text(result.error())));
        });
}

void MacView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    sidebar_->setNarrow(width() < scaled(foldsSidebarBelow));
}

QString MacView::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen
