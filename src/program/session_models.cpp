#include "program/session_models.h"

#include "inventory/app_inventory.h"
#include "inventory/installed_applications.h"
#include "inventory/known_apps.h"
#include "removal/flow_types.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_app.h"
#include "system/request_inbox.h"

#include <filesystem>
#include <string>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

// More would only wait for the disk; with fewer, a screen would wait for another one that is still reading.
constexpr unsigned readers = 3;

/// Distinguishes the known applications of this Mac from those of other Macs.
std::string nameForMemory(const Mac& mac) {
    std::error_code error;
    const auto root = mac.volume ? std::filesystem::weakly_canonical(*mac.volume, error) : "/";
    return root.string() + " " + mac.system.user.home.string();
}

} // namespace

RequestInbox requestInbox(const Mac& mac, const OwnBundle& bundle) {
    auto container = mac.groupContainer ? mac.groupContainer(bundle.group) : std::nullopt;
    if (!container) container = RequestInbox::fallbackContainer(mac.system.user, bundle);
    return {mac.system.files, std::move(container), mac.system.log};
}

WorkQueue& SessionModels::reading() {
    return reading_ ? *reading_ : reading_.emplace(readers);
}

WorkQueue& SessionModels::watching() {
    return watching_ ? *watching_ : watching_.emplace(1u);
}

std::vector<InstalledApp> SessionModels::listApps(const FileSystem& files) const {
    const auto& system = shared_.mac.system;
    return listInstalledApps(files, system.signatures, findApplicationBundles(files, system.user));
}

RemovalFlowModel& SessionModels::removal() {
    return removal_ ? *removal_ : removal_.emplace(shared_.removal(), shared_.mac.system.user);
}

HomeGridModel& SessionModels::homeGrid() {
    if (homeGrid_) return *homeGrid_;
    const auto& system = shared_.mac.system;
    inventory_.emplace(AppInventory::Ports{system.files, system.signatures, system.runningApplications,
                                           shared_.mac.usageRecords},
                       system.user, KnownAppsFile(shared_.mac.knownApps, nameForMemory(shared_.mac)));
    return homeGrid_.emplace(HomeGridModel::Ports{*inventory_, shared_.preferences, shared_.tags,
                                                  shared_.protectedApps, system.texts, system.clock,
                                                  shared_.main, reading()});
}

InstallersModel& SessionModels::installers() {
    if (installers_) return *installers_;
    const auto& system = shared_.mac.system;
    return installers_.emplace(
        InstallersModel::Ports{system.files, system.user, system.texts, shared_.main, reading()},
        [this] { return listApps(shared_.mac.system.files); });
}

StartupItemsModel& SessionModels::startupItems() {
    if (startupItems_) return *startupItems_;
    const auto& system = shared_.mac.system;
    bundles_.emplace(system.files, system.signatures, system.user);
    startupScanner_.emplace(
        system.files, system.user, *bundles_,
        [&known = system.knownApplications](const std::string& bundleID) { return known.isKnown(bundleID); });
    return startupItems_.emplace(StartupItemsModel::Ports{system.files, system.launchd, *startupScanner_,
                                                          shared_.protectedApps, system.texts, shared_.main,
                                                          reading(), system.log},
                                 [this](const FileSystem& files) { return listApps(files); });
}

PermissionsModel& SessionModels::permissions() {
    if (permissions_) return *permissions_;
    const auto& system = shared_.mac.system;
    return permissions_.emplace(PermissionsModel::Ports{system.files, shared_.main, reading(), system.log},
                                system.user, shared_.mac.isFinderExtensionEnabled);
}

HistoryModel& SessionModels::history() {
    if (history_) return *history_;
    const auto& system = shared_.mac.system;
    return history_.emplace(HistoryModel::Ports{system.files, shared_.undo, shared_.purge, system.defaults,
                                                system.texts, shared_.main, shared_.actions},
                            system.user);
}

StartupChores& SessionModels::chores() {
    return chores_ ? *chores_ : chores_.emplace(shared_.chores(), shared_.mac.system.user);
}

std::optional<SessionModels::Work> SessionModels::work() {
    if (std::holds_alternative<stage::Removing>(removal().stage())) return Work::removal;
    if (removal().isUndoing() || chores().isUndoing()) return Work::undo;
    if (!history().busyEntryID.get()) return std::nullopt;
    return history().isDeleting() ? Work::deletion : Work::undo;
}

Property<bool>& SessionModels::takesRequests() {
    if (takesRequests_) return *takesRequests_;
    const auto now = [this] { return removal().takesTargets() && !isBusy(); };
    takesRequests_.emplace(now());
    const auto update = [this, now](const auto&) { takesRequests_->set(now()); };
    following_.push_back(removal().changed.connect(update));
    following_.push_back(chores().changed.connect(update));
    following_.push_back(history().busyEntryID.observe(update));
    return *takesRequests_;
}

void SessionModels::close() {
    following_.clear();
    takesRequests_.reset();
    trashCatcher_.reset();
    chores_.reset();
    history_.reset();
    permissions_.reset();
    startupItems_.reset();
    installers_.reset();
    homeGrid_.reset();
    removal_.reset();
}

void SessionModels::finishReading() {
    if (watching_) watching_->finish();
    if (reading_) reading_->finish();
}

TrashCatcher& SessionModels::trashCatcher() {
    if (trashCatcher_) return *trashCatcher_;
    const auto& mac = shared_.mac;
    const auto& system = mac.system;
    return trashCatcher_.emplace(TrashCatcher::Ports{system.files, mac.folderEvents, mac.notifications,
                                                     mac.loginItem, system.texts, system.clock, shared_.main,
                                                     watching(), system.log},
                                 shared_.preferences, system.user.trash());
}

std::unique_ptr<PermissionsSheet> SessionModels::permissionsSheet(AppTarget app) {
    return std::make_unique<PermissionsSheet>(
        PermissionsSheet::Ports{shared_.audit, shared_.mac.permissionRevoker, shared_.main, reading()},
        std::move(app));
}

std::unique_ptr<InboxWatcher> SessionModels::inboxWatcher(const OwnBundle& bundle,
                                                          InboxWatcher::OnRequest onRequest) {
    const auto& mac = shared_.mac;
    auto watcher = std::make_unique<InboxWatcher>(
        InboxWatcher::Ports{mac.system.files, mac.folderEvents, shared_.main, watching(), mac.system.log},
        requestInbox(mac, bundle), std::move(onRequest));
    watcher->follow(takesRequests());
    return watcher;
}

} // namespace tidwen
