#include "system/trash_catcher.h"

#include "base/background_step.h"
#include "base/log.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_system.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle.h"
#include "scan/applications/shared_names.h"

#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t maximumUnfinished = 8; // each watch has its own thread

bool isNoneOfTheUsers(std::string_view identifier) {
    return isFromApple(identifier) || lowercased(identifier) == tidwenBundleID;
}

} // namespace

TrashedBundle TrashedBundle::read(const FileSystem& files, const Path& url) {
    TrashedBundle seen{.url = url};
    const auto info = files.info(url);
    if (!info || info->kind == FileKind::symbolicLink) return seen;
    if (!isValidUtf8(url.string())) return seen; // a path that cannot be reported or passed on
    const auto bundle = Bundle::open(files, url);
    const auto identifier = bundle ? bundle->identifier() : std::nullopt;
    seen.isUnfinished = info->kind == FileKind::directory && !identifier;
    if (identifier && !isNoneOfTheUsers(*identifier)) seen.app = TrashedApp{url, bundle->name(), *identifier};
    return seen;
}

UserNotification trashNotification(const TrashedApp& app, const Texts& texts) {
    return {.identifier = app.url.string(), // a later one for the same bundle replaces the first
            .title = texts.text("trash.notification.title %@", {app.name}),
            .body = texts.text("trash.notification.body"),
            .category = trashedAppCategory,
            .actionIdentifier = cleanUpAction,
            .actionTitle = texts.text("trash.notification.action"),
            .userInfo = {{"path", app.url.string()}, {"bundleID", app.bundleID}}};
}

bool alignLoginItem(LoginItem& loginItem, bool enabled, Log& log) {
    const bool isAligned = loginItem.isEnabled() == enabled && !loginItem.startsAnother();
    if (isAligned || loginItem.setEnabled(enabled)) return true;
    log.warning("Could not change whether Tidwen starts at login");
    return false;
}

TrashCatcher::TrashCatcher(Ports ports, AppPreferences& preferences, const Path& trash)
    : ports_(ports),
      preferences_(preferences),
      permission_(ports.notifications, ports.main),
      watcher_({ports.files, ports.events, ports.clock, ports.main, ports.queue, ports.log}, trash,
               [this](const std::vector<Path>& bundles) { look(bundles); }) {}

void TrashCatcher::install() {
    if (isInstalled_) return;
    isInstalled_ = true;
    ports_.notifications.onResponse(
        [this, main = &ports_.main, alive = std::weak_ptr(alive_)](
            const std::string& action, const std::map<std::string, std::string>& info) {
            main->post([this, alive, action, info] {
                if (!alive.expired()) respond(action, info);
            });
        });
    following_ = preferences_.catchTrashedApps.observe([this](const bool& enabled) { apply(enabled); });
    apply(preferences_.catchTrashedApps.get());
}

void TrashCatcher::apply(bool enabled) {
    isOn_ = enabled;
    if (enabled)
        watcher_.start();
    else
        watcher_.stop();
    if (!enabled) unfinished_.clear();
    // Tidwen must start at login if and only if the Trash is watched.
    ports_.queue.post(
        [&item = ports_.loginItem, &log = ports_.log, enabled] { (void)alignLoginItem(item, enabled, log); });
}

void TrashCatcher::watchOnce() {
    isOn_ = true;
    watcher_.start();
}

void TrashCatcher::look(const std::vector<Path>& bundles, const std::optional<Path>& awaited) {
    const auto read = [&files = ports_.files, bundles] {
        std::vector<TrashedBundle> seen;
        seen.reserve(bundles.size());
        for (const auto& url : bundles)
            seen.push_back(TrashedBundle::read(files, url));
        return seen;
    };
    inBackground(*this, alive_, ports_.queue, ports_.main, read, [awaited](TrashCatcher& catcher, auto seen) {
        const bool isWanted = !awaited || catcher.unfinished_.contains(*awaited);
        if (catcher.isOn_ && isWanted) catcher.report(seen);
    });
}

void TrashCatcher::report(const std::vector<TrashedBundle>& bundles) {
    permission_.refresh();
    const bool isAllowed = permission_.state.get() == NotificationState::allowed;
    if (!isAllowed) ports_.log.info("App trashed, notifications not allowed - nothing posted");
    std::vector<UserNotification> notifications;
    for (const auto& bundle : bundles) {
        if (bundle.isUnfinished)
            awaitRest(bundle.url);
        else
            unfinished_.erase(bundle.url);
        if (!bundle.app) continue;
        found.emit(*bundle.app);
        if (isAllowed) notifications.push_back(trashNotification(*bundle.app, ports_.texts));
    }
    if (notifications.empty()) return;
    ports_.queue.post([&port = ports_.notifications, &log = ports_.log, notifications] {
        for (const auto& each : notifications) // elsewhere than on a Mac each runs a tool
            if (!port.post(each)) log.warning("A notification could not be posted: {}", each.identifier);
    });
}

/// While an item is copied into the Trash its name appears first and its Info.plist later.
void TrashCatcher::awaitRest(const Path& bundle) {
    if (unfinished_.contains(bundle) || unfinished_.size() == maximumUnfinished) return;
    const auto lookAgain = [this, bundle, main = &ports_.main, alive = std::weak_ptr(alive_)] {
        main->post([this, bundle, alive] {
            if (!alive.expired()) look({bundle}, bundle);
        });
    };
    unfinished_[bundle] = ports_.events.watch(bundle / "Contents", lookAgain);
    lookAgain(); // anything that arrived before the watch started
}

void TrashCatcher::respond(const std::string& action, const std::map<std::string, std::string>& userInfo) {
    if (action != cleanUpAction && action != defaultNotificationAction) return;
    const auto path = userInfo.find("path");
    if (path == userInfo.end()) return;
    const auto bundleID = userInfo.find("bundleID");
    pendingCleanUps_.push_back(
        {path->second, bundleID == userInfo.end() ? std::nullopt : std::optional(bundleID->second)});
    if (presentMainWindow) presentMainWindow();
}

std::optional<TrashCatcher::CleanUp> TrashCatcher::takePendingCleanUp() {
    if (pendingCleanUps_.empty()) return std::nullopt;
    auto oldest = std::move(pendingCleanUps_.front());
    pendingCleanUps_.pop_front();
    return oldest;
}

} // namespace tidwen
