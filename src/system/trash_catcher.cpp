#include "system/trash_catcher.h"

#include "base/text.h"
#include "scan/app_target.h"
#include "scan/bundle.h"

namespace tidwen {

std::optional<TrashedApp> TrashedApp::read(const FileSystem& files, const Path& url) {
    if (const auto info = files.info(url); !info || info->kind == FileKind::symbolicLink) return std::nullopt;
    const auto bundle = Bundle::open(files, url);
    const auto identifier = bundle ? bundle->identifier() : std::nullopt;
    if (!identifier) return std::nullopt;
    const auto lowered = lowercased(*identifier);
    if (lowered.starts_with("com.apple.") || lowered == tidwenBundleID) return std::nullopt;
    return TrashedApp{url, bundle->name(), *identifier};
}

UserNotification trashNotification(const TrashedApp& app, const Texts& texts) {
    return {.identifier = app.url.string(), // a second one for the same bundle replaces the first
            .title = texts.text("trash.notification.title %@", {app.name}),
            .body = texts.text("trash.notification.body"),
            .category = trashedAppCategory,
            .actionIdentifier = cleanUpAction,
            .actionTitle = texts.text("trash.notification.action"),
            .userInfo = {{"path", app.url.string()}, {"bundleID", app.bundleID}}};
}

bool alignLoginItem(LoginItem& loginItem, bool enabled, Log& log) {
    if (loginItem.isEnabled() == enabled || loginItem.setEnabled(enabled)) return true;
    log.warning("Could not change whether Tidwen starts at login");
    return false;
}

TrashCatcher::TrashCatcher(Ports ports, AppPreferences& preferences, const Path& trash)
    : ports_(ports),
      preferences_(preferences),
      permission_(ports.notifications, ports.main),
      watcher_({ports.files, ports.events, ports.clock, ports.main, ports.queue, ports.log}, trash,
               [this](const std::vector<Path>& bundles) { post(bundles); }) {}

void TrashCatcher::install() {
    if (isInstalled_) return;
    isInstalled_ = true;
    ports_.notifications.onResponse(
        [this](const std::string& action, const std::map<std::string, std::string>& info) {
            ports_.main.post([this, action, info] { respond(action, info); });
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
    // A Mac that watches the Trash has to start Tidwen at login; one that does not must not.
    (void)alignLoginItem(ports_.loginItem, enabled, ports_.log);
}

void TrashCatcher::watchOnce() {
    isOn_ = true;
    watcher_.start();
}

void TrashCatcher::post(const std::vector<Path>& bundles) {
    if (!isOn_) return;
    permission_.refresh();
    const bool isAllowed = permission_.state.get() == NotificationState::allowed;
    if (!isAllowed) ports_.log.info("App trashed, notifications not allowed - nothing posted");
    for (const auto& url : bundles) {
        const auto app = TrashedApp::read(ports_.files, url);
        if (!app) continue;
        found.emit(*app);
        if (isAllowed && !ports_.notifications.post(trashNotification(*app, ports_.texts)))
            ports_.log.warning("A notification could not be posted: {}", app->url.string());
    }
}

void TrashCatcher::respond(const std::string& action, const std::map<std::string, std::string>& userInfo) {
    if (action != cleanUpAction && action != defaultNotificationAction) return;
    const auto path = userInfo.find("path");
    if (path == userInfo.end()) return;
    const auto bundleID = userInfo.find("bundleID");
    pendingCleanUp_ =
        CleanUp{path->second, bundleID == userInfo.end() ? std::nullopt : std::optional(bundleID->second)};
    if (presentMainWindow) presentMainWindow();
}

std::optional<TrashCatcher::CleanUp> TrashCatcher::takePendingCleanUp() {
    return std::exchange(pendingCleanUp_, {});
}

} // namespace tidwen
