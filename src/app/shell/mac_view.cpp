#include "app/shell/mac_view.h"

#include "app/screens/review/review_screen.h"
#include "app/shell/activity_strip.h"
#include "app/shell/drop_words.h"
#include "app/shell/flow_display.h"
#include "app/shell/mac_screens.h"
#include "app/shell/recovery_banner.h"
#include "app/shell/said_above.h"
#include "app/shell/sidebar.h"
#include "app/style/metrics.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/background_step.h"
#include "base/path.h"
#include "program/host_paths.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "removal/flow_types.h"
#include "system/permissions_model.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QPointer>

#include <algorithm>
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

} // namespace

MacView::MacView(OpenMac& mac, Executor& background, const Menus& menus)
    : mac_(mac),
      background_(background),
      texts_(mac.system().texts),
      questions_(*this, mac, [this](const QString& words) { say(words); }),
      desktop_(mac, [this](const QString& words) { say(words); }) {
    makeSidebar(menus);
    makeScreens();
    auto* main = parts::column(nullptr);
    main->addWidget(new ActivityStrip(mac.session().models(), texts_, mac.system().user));
    main->addWidget(new RecoveryBanner(mac.chores(), texts_, mac.isRunningMac(),
                                       [this](const Path& item) { desktop_.reveal(item); }));
    main->addWidget(said_);
    main->addWidget(screens_, 1);
    auto* layout = parts::row(this);
    layout->addWidget(sidebar_);
    layout->addLayout(main, 1);
    followFlow();
    followModels();
    if (mac.isRunningMac()) followPermissions(); // a volume asks for none
    showCounts();
    showStage();
}

MacView::~MacView() = default;

void MacView::makeSidebar(const Menus& menus) {
    const auto user = shown(mac_.userName());
    const auto second = mac_.isRunningMac() ? user : text("window.system.volume %@", {user.toStdString()});
    sidebar_ = new Sidebar(
        texts_, {shown(mac_.name()), second}, menus.systems, [this](Place place) { go(place); },
        menus.openSettings);
}

void MacView::makeScreens() {
    said_ = new SaidAbove(text("window.dismiss"));
    screens_ = new MacScreens(
        mac_, {.lookAt = [this](const auto& bundles, RemovalMode mode) { lookAt(bundles, mode); },
               .sweep = [this] { sweep(); },
               .rescan = [this] { rescan(); },
               .confirm = [this] { questions_.confirm(); },
               .confirmInstallers = [this] { questions_.confirmInstallers(); },
               .confirmStartupItems = [this] { questions_.confirmStartupItems(); },
               .showPermissions = [this](AppTarget app) { showPermissions(std::move(app)); },
               .reveal = [this](const Path& item) { desktop_.reveal(item); },
               .openPane = [this](auto pane) { openPane(pane); },
               .say = [this](const QString& words) { say(words); }});
    flowDisplay_ = std::make_unique<FlowDisplay>(mac_, *screens_, *said_);
}

void MacView::begin() {
    screens_->takeFocus();
    mac_.session().models().homeGrid().load();
    mac_.chores().run();
}

MacView::Handover MacView::handOver() const {
    return {.place = place_,
            .leftovers = leftoverCount_,
            .isErrorDismissed = said_->isErrorDismissed(),
            .questions = questions_.open()};
}

void MacView::takeOver(Handover handover) {
    place_ = handover.place;
    leftoverCount_ = handover.leftovers;
    showCounts();
    showStage();
    if (handover.isErrorDismissed) said_->dismissError();
    screens_->takeFocus();
    questions_.reopen(std::move(handover.questions));
}

void MacView::followFlow() {
    auto& flow = mac_.flow();
    following_.push_back(flow.changed.connect([this](FlowChange change) { follow(change); }));
    following_.push_back(flow.progress.observe([this](const auto&) { flowDisplay_->showWork(); }));
    following_.push_back(flow.phases.observe([this](const auto&) { flowDisplay_->showWork(); }));
    following_.push_back(flow.sweep().changed.connect([this](SweepChange change) {
        if (std::holds_alternative<stage::Scanning>(mac_.flow().stage())) return flowDisplay_->showWork();
        if (change == SweepChange::finds) showStage();
    }));
    flow.onReportDismissed = [this] { leaveReport(); };
}

void MacView::followModels() {
    auto& models = mac_.session().models();
    const auto count = [this](const auto&) { showCounts(); };
    following_.push_back(models.homeGrid().inventory.observe(count));
    following_.push_back(models.history().entries.observe(count));
    following_.push_back(models.installers().result.observe(count));
    following_.push_back(models.startupItems().result.observe(count));
    following_.push_back(mac_.chores().changed.connect([this](ChoresChange change) {
        followWork();
        if (mac_.isBusy() || change == ChoresChange::notices) return;
        mac_.session().models().history().load();
        mac_.session().models().homeGrid().load();
    }));
    auto& kept = mac_.session().protectedApps();
    following_.push_back(kept.changed.connect([this, &kept](const auto&) {
        const auto isKept = [&](const AppTarget& app) { return kept.contains(app.bundleID); };
        const auto& refused = mac_.flow().protectedTargets();
        if (!refused.empty() && std::ranges::none_of(refused, isKept)) said_->dismissError();
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
}

void MacView::followPermissions() {
    using Status = FullDiskAccessProbe::Status;
    auto& access = mac_.session().models().permissions().fullDiskAccess;
    following_.push_back(access.observe([this](Status status) {
        sidebar_->warn(status == Status::denied ? text("settings.permissions.fullDisk.denied") : QString());
        if (status == Status::granted) screens_->review().showGrantedAccess();
    }));
}

void MacView::follow(FlowChange change) {
    const auto& flow = mac_.flow();
    const bool isReport = std::holds_alternative<stage::Report>(flow.stage());
    if (isReport && (change == FlowChange::stage || change == FlowChange::undo) && !flow.isUndoing()) {
        mac_.session().models().homeGrid().load(); // what is counted beside the report has changed
        mac_.session().models().history().load();
    }
    if (change == FlowChange::stage || change == FlowChange::listing) return showStage();
    flowDisplay_->show(change);
    if (change == FlowChange::prompt || change == FlowChange::undo) followWork();
}

/// Where it leads to is read later: it may be left again at once.
void MacView::leaveReport() {
    screens_->startAfresh();
    screens_->takeFocus();
    mac_.session().models().homeGrid().load();
    mac_.session().models().history().load();
    QMetaObject::invokeMethod(
        this, [this] { load(place_); }, Qt::QueuedConnection);
}

void MacView::showCounts() {
    auto& models = mac_.session().models();
    sidebar_->setCount(Place::applications, models.homeGrid().inventory.get().count);
    sidebar_->setCount(Place::leftovers, leftoverCount_);
    sidebar_->setCount(Place::installers, models.installers().result.get().files.size());
    sidebar_->setCount(Place::startupItems, models.startupItems().result.get().items.size());
    sidebar_->setCount(Place::history, models.history().entries.get().size());
}

void MacView::showStage() {
    if (const auto* orphans = std::get_if<stage::Orphans>(&mac_.flow().stage())) {
        place_ = Place::leftovers;
        leftoverCount_ = 0;
        for (const auto& group : orphans->result->groups)
            leftoverCount_ += group.traces.size();
        showCounts();
    }
    sidebar_->choose(place_);
    flowDisplay_->showStage(place_);
    followWork();
}

void MacView::followWork() {
    sidebar_->setEnabled(!mac_.isBusy());
    questions_.follow();
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
    // What lies under a question does not change before it is answered.
    if (mac_.isBusy() || Sheet::topmost(*window())) return;
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

void MacView::lookAt(const std::vector<Path>& bundles, RemovalMode mode) {
    auto& flow = mac_.flow();
    if (const auto why = whyNoLook(mac_); !why.isEmpty()) return say(why);
    flowDisplay_->expect(bundles, mode);
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
            return std::pair(std::move(bundles), paths.size());
        },
        [](MacView& view, const std::pair<std::vector<Path>, std::size_t>& taken) {
            const auto& [bundles, dropped] = taken;
            view.said_->fallSilent(); // what was said of an earlier drop
            if (bundles.empty()) return view.say(view.text("drop.elsewhere"));
            view.lookAt(bundles);
            if (const auto others = dropped - bundles.size(); others > 0)
                view.say(view.text("drop.someElsewhere %lld", {std::to_string(others)}));
        });
}

void MacView::search() {
    screens_->search();
}

void MacView::say(const QString& words) {
    said_->say(words);
}

void MacView::showPermissions(AppTarget app) {
    questions_.showPermissions(std::move(app),
                               [this] { openPane(SystemSettingsLauncher::Pane::privacyAndSecurity); });
}

/// Escape leads out of the sidebar to the screen, where it goes back.
void MacView::keyPressEvent(QKeyEvent* event) {
    const bool isInSidebar = sidebar_->isAncestorOf(QApplication::focusWidget());
    if (event->key() == Qt::Key_Escape && isInSidebar) return screens_->takeFocus();
    const auto typed = event->text();
    if (isInSidebar && !typed.isEmpty() && typed.at(0).isPrint()) { // a search, as on the screen
        screens_->takeFocus();
        QCoreApplication::sendEvent(QApplication::focusWidget(), event);
        return;
    }
    QWidget::keyPressEvent(event);
}

void MacView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    sidebar_->setNarrow(width() < scaled(foldsSidebarBelow));
}

QString MacView::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen
