#pragma once

#include "base/observable.h"
#include "base/texts.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "settings/app_preferences.h"
#include "system/notification_permission.h"
#include "system/trash_watcher.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tidwen {

// Notices applications that the user puts into the Trash and offers to take away what they left behind. These
// names tie the notification to its action.

inline constexpr const char* trashedAppCategory = "tidwen.trashedApp";
inline constexpr const char* cleanUpAction = "tidwen.trashedApp.cleanUp";

/// An application bundle that lies in the Trash.
struct TrashedApp {
    Path url;
    std::string name;
    std::string bundleID;
};

/// What lies under the name of an application in the Trash, as one look saw it.
struct TrashedBundle {
    Path url;
    /// Nothing for what has no identifier, is Apple's, or is this program, and for a link: the application it
    /// leads to is not in the Trash.
    std::optional<TrashedApp> app = {};
    bool isUnfinished = false; ///< a folder that does not say who it is, or not yet

    static TrashedBundle read(const FileSystem& files, const Path& url);
};

/// Registers this program for the next login, or takes it out. False, with a log line, when that failed.
bool alignLoginItem(LoginItem& loginItem, bool enabled, Log& log);

/// What tells the user of it.
UserNotification trashNotification(const TrashedApp& app, const Texts& texts);

/// Offers to clean up after applications that the user moved to the Trash, while the preference is on.
/// Belongs to the main thread; one per process.
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

    /// What the user chose to clean up.
    struct CleanUp {
        std::string path;
        std::optional<std::string> bundleID;
    };

    TrashCatcher(Ports ports, AppPreferences& preferences, const Path& trash);

    /// Follows the preference from now on. Once per process.
    void install();

    /// Watches or not, and starts this program at login or not. Called by the preference.
    void apply(bool enabled);

    /// Watches now, whatever the preference says, until it changes. Changes nothing for the next login.
    void watchOnce();

    /// Shows the main window; the shell then asks for `takePendingCleanUp`.
    std::function<void()> presentMainWindow;
    std::optional<CleanUp> takePendingCleanUp();

    /// Each application that arrived, notification or not; the terminal prints them.
    Signal<const TrashedApp&> found;

    NotificationPermission& permission() { return permission_; }
    bool isWatching() const { return watcher_.isWatching(); }

  private:
    /// Reads them on the queue, and tells of them if that is `stillAwaited`.
    void look(
        const std::vector<Path>& bundles, std::function<bool()> stillAwaited = [] { return true; });
    void tell(const std::vector<TrashedBundle>& bundles);
    void awaitRest(const Path& bundle);
    void respond(const std::string& action, const std::map<std::string, std::string>& userInfo);

    Ports ports_;
    AppPreferences& preferences_;
    NotificationPermission permission_;
    TrashWatcher watcher_;
    bool isInstalled_ = false;
    bool isOn_ = false;
    std::optional<CleanUp> pendingCleanUp_;
    std::map<Path, std::unique_ptr<FolderEvents::Watch>> unfinished_; ///< bundles that are still being copied
    Subscription following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
