#include "system/trash_catcher.h"

#include "base/text.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle.h"

namespace tidwen {

namespace {

constexpr std::size_t maximumUnfinished = 8; // each is watched by a thread

/// A bundle folder that does not say who it is, or not yet.
bool isUnfinished(const FileSystem& files, const Path& url) {
    const auto info = files.info(url);
    if (!info || info->kind != FileKind::directory) return false;
    const auto bundle = Bundle::open(files, url);
    return !bundle || !bundle->identifier();
}

} // namespace

std::optional<TrashedApp> TrashedApp::read(const FileSystem& files, const Path& url) {
    if (const auto info = files.info(url); !info || info->kind == FileKind::symbolicLink) return std::nullopt;
    if (!isValidUtf8(url.string())) return std::nullopt; // nobody could be told of it, or answer
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
        if (!app) {
            awaitRest(url);
            continue;
        }
        unfinished_.erase(url);
        found.emit(*app);
        if (isAllowed && !ports_.notifications.post(trashNotification(*app, ports_.texts)))
            ports_.log.warning("A notification could not be posted: {}", app->url.string());
    }
}

/// What is copied into the Trash shows its name first and who it is some time later.
void TrashCatcher::awaitRest(const Path& bundle) {
    if (!isUnfinished(ports_.files, bundle)) {
        unfinished_.erase(bundle);
        return;
    }
    if (unfinished_.contains(bundle) || unfinished_.size() == maximumUnfinished) return;
    const auto lookAgain = [this, bundle, main = &ports_.main, alive = std::weak_ptr(alive_)] {
        main->post([this, bundle, alive] {
            if (!alive.expired() && unfinished_.contains(bundle)) post({bundle});
        });
    };
    unfinished_[bundle] = ports_.events.watch(bundle / "Contents", lookAgain);
    lookAgain(); // what came before it was watched
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
