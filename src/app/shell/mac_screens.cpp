#include "app/shell/mac_screens.h"

#include "app/screens/applications/applications_screen.h"
#include "app/screens/history/history_screen.h"
#include "app/screens/installers/installers_screen.h"
#include "app/screens/leftovers/leftovers_screen.h"
#include "app/screens/removing/work_screen.h"
#include "app/screens/report/report_screen.h"
#include "app/screens/review/review_screen.h"
#include "app/screens/startup/startup_screen.h"
#include "app/widgets/motion.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/words.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/trace.h"
#include "system/permissions_model.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

using Pane = SystemSettingsLauncher::Pane;

Pane launcherPane(SettingsPane pane) {
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

bool isRunning(HomeGridModel& grid, const AppTarget& app) {
    return std::ranges::any_of(grid.apps(), [&](const SharedApp& each) {
        return each->bundleID == app.bundleID && each->usage && each->usage->isRunning;
    });
}

} // namespace

MacScreens::MacScreens(OpenMac& mac, Actions actions) : mac_(mac), actions_(std::move(actions)) {
    connect(this, &QStackedWidget::currentChanged, this, [this] { fadeIn(*this); });
    makePlaces();
    makeStages();
    for (QWidget* screen : std::initializer_list<QWidget*>{applications_, leftovers_, installers_, startup_,
                                                           history_, work_, review_, report_})
        addWidget(new Scrolled(screen));
}

/// A volume has no settings to open.
void MacScreens::makePlaces() {
    auto& session = mac_.session();
    auto& models = session.models();
    const auto& system = mac_.system();
    const auto& texts = system.texts;
    const auto& reveal = actions_.reveal;
    const bool isVolume = !mac_.isRunningMac();
    applications_ = new ApplicationsScreen(
        {models.homeGrid(), session.preferences(), session.protectedApps(), session.tags(), mac_.icons(),
         texts, system.clock, reveal, actions_.say},
        actions_.lookAt, [this](const InstalledApp& app) {
            actions_.showPermissions({.bundleURL = app.url, .bundleID = app.bundleID, .name = app.name});
        });
    leftovers_ =
        new LeftoversScreen(mac_.flow(), texts, system.user, {actions_.sweep, actions_.confirm, reveal});
    auto help = isVolume ? std::function<void()>([this] { mac_.session().models().installers().load(); })
                         : [this] { actions_.openPane(Pane::fullDiskAccess); };
    installers_ = new InstallersScreen(
        models.installers(), mac_.icons(), texts,
        {actions_.confirmInstallers, reveal,
         words(texts, isVolume ? "leftovers.again" : "installers.unreadable.action"), std::move(help)});
    startup_ = new StartupScreen(
        models.startupItems(), mac_.icons(), texts,
        {actions_.confirmStartupItems, reveal, [this] { actions_.openPane(Pane::loginItemsAndExtensions); }});
    history_ =
        new HistoryScreen(models.history(), mac_.icons(), texts, system.user, !isVolume,
                          {reveal, [this](std::function<void()> act) { mac_.onceThere(std::move(act)); }});
}

void MacScreens::makeStages() {
    auto& flow = mac_.flow();
    const auto& system = mac_.system();
    work_ = new WorkScreen(system.texts, mac_.icons(), system.user, [&flow] { flow.stop(); });
    std::function<void(SettingsPane)> openPane;
    std::function<void()> openPrivacy;
    if (mac_.isRunningMac()) {
        openPane = [this](SettingsPane pane) { actions_.openPane(launcherPane(pane)); };
        openPrivacy = [this] { actions_.openPane(Pane::privacyAndSecurity); };
    }
    const auto hasFullDiskAccess = [this] {
        return mac_.session().models().permissions().fullDiskAccess.get()
               == FullDiskAccessProbe::Status::granted;
    };
    const auto runs = [this](const AppTarget& app) {
        return isRunning(mac_.session().models().homeGrid(), app);
    };
    review_ = new ReviewScreen(flow, mac_.icons(), system.texts, system.user,
                               {actions_.confirm, actions_.rescan, actions_.reveal, actions_.showPermissions,
                                std::move(openPane), hasFullDiskAccess, runs});
    report_ = new ReportScreen(flow, system.texts, actions_.reveal, std::move(openPrivacy));
}

QWidget* MacScreens::current() const {
    return static_cast<Scrolled*>(currentWidget())->widget();
}

void MacScreens::turnTo(QWidget& screen) {
    if (current() == &screen) return;
    for (int i = 0; i < count(); ++i)
        if (static_cast<Scrolled*>(widget(i))->widget() == &screen) setCurrentIndex(i);
    screen.setFocus();
}

void MacScreens::turnTo(Place place) {
    switch (place) {
    case Place::leftovers:
        return turnTo(*leftovers_);
    case Place::installers:
        return turnTo(*installers_);
    case Place::startupItems:
        return turnTo(*startup_);
    case Place::history:
        return turnTo(*history_);
    case Place::applications:
        return turnTo(*applications_);
    }
}

void MacScreens::search() {
    const auto* shown = current();
    if (shown == applications_) applications_->search();
    if (shown == review_) review_->search();
    if (shown == history_) history_->search();
    for (auto* list : lists())
        if (shown == list) list->search();
}

void MacScreens::startAfresh() {
    applications_->startAfresh();
    for (auto* list : lists())
        list->forgetSearch();
}

std::vector<ListScreen*> MacScreens::lists() const {
    return {leftovers_, installers_, startup_};
}

} // namespace tidwen
