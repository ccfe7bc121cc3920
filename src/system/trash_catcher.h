#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/folder_events.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "settings/app_preferences.h"
#include "system/notification_permission.h"
#include "system/trash_watcher.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

// Detects applications that the user moves to the Trash and offers to remove their leftovers. These names
// connect the notification with its action.

inline constexpr const char* trashedAppCategory = "tidwen.trashedApp";
inline constexpr const char* cleanUpAction = "tidwen.trashedApp.cleanUp";

/// An application bundle in the Trash.
struct TrashedApp {
    Path url;
    std::string name;
    std::string bundleID;
};

/// An item in the Trash with the name of an application, as one look saw it.
struct TrashedBundle {
    Path url;
    /// nullopt for an item without identifier, for Apple's and this program, and for a link: the application
    /// it leads to is not in the Trash.
    std::optional<TrashedApp> app = {};
    bool isUnfinished = false; ///< a folder without an identity, perhaps because it is still being copied

    static TrashedBundle read(const FileSystem& files, const Path& url);
};

/// Registers this program to start at login, or removes it. False, with a log line, on failure.
bool alignLoginItem(LoginItem& loginItem, bool enabled, Log& log);

/// The notification about it.
UserNotification trashNotification(const TrashedApp& app, const Texts& texts);

/// Offers to remove the leftovers of applications that the user moved to the Trash, while the preference is
/// on. Main thread only; one per process.
class TrashCatcher {
  public:
    struct Ports {
        const FileSystem& files;
        FolderEvents& events;
        Notifications& notifications;
        LoginItem& loginItem;
        const Texts& texts;
        const Clock& clock;
        Executor& main;
        Executor& queue; ///< serial
        Log& log;
    };

    /// What the user chose to remove.
    struct CleanUp {
        std::string path;
        std::optional<std::string> bundleID;
    };

    TrashCatcher(Ports ports, AppPreferences& preferences, const Path& trash);

    /// Follows the preference from now on. Call once per process.
    void install();

    /// Turns the watch and the start at login on or off. Called when the preference changes.
    void apply(bool enabled);

    /// Watches now regardless of the preference, until it changes. Does not affect the next login.
    void watchOnce();

    /// Shows the main window; the shell then calls `takePendingCleanUp`.
    std::function<void()> presentMainWindow;
    /// The oldest that was not taken yet.
    std::optional<CleanUp> takePendingCleanUp();

    /// Emitted for each application that arrived, with or without a notification; the terminal prints them.
    Signal<const TrashedApp&> found;

    NotificationPermission& permission() { return permission_; }
    bool isWatching() const { return watcher_.isWatching(); }

  private:
    /// Reads them on the queue and reports them, unless one that was `awaited` has been reported meanwhile.
    void look(const std::vector<Path>& bundles, const std::optional<Path>& awaited = {});
    void report(const std::vector<TrashedBundle>& bundles);
    void awaitRest(const Path& bundle);
    void respond(const std::string& action, const std::map<std::string, std::string>& userInfo);

    Ports ports_;
    AppPreferences& preferences_;
    NotificationPermission permission_;
    TrashWatcher watcher_;
    bool isInstalled_ = false;
    bool isOn_ = false;
    std::deque<CleanUp> pendingCleanUps_;
    std::map<Path, std::unique_ptr<FolderEvents::Watch>> unfinished_; ///< bundles that are still being copied
    Subscription following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen
