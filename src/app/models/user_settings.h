#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "platform/defaults.h"
#include "program/settings_follower.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The user's settings as the window shows and changes them, whichever Mac is open. Follows other processes.
/// Main thread only.
class UserSettings {
  public:
    /// `languages`: those that can be chosen. What is passed outlives this.
    UserSettings(Defaults& defaults, Executor& main, std::vector<std::string> languages);

    AppPreferences& preferences() { return preferences_; }
    ProtectedApps& protectedApps() { return protectedApps_; }

    /// Why the settings cannot be read, and so are not changed either.
    Property<std::optional<Message>> problem;
    /// Why the last change was not stored; the setting then stays as it was.
    Property<std::optional<Message>> failure;
    /// Emitted after every change, made here or elsewhere.
    Signal<> changed;

    /// By the setting's name and stored text. False when it was not stored.
    bool set(std::string_view name, std::string_view value);
    void setProtected(const std::string& bundleID, bool isProtected);
    /// Reads everything again.
    void reload();

  private:
    Defaults& defaults_;
    AppPreferences preferences_;
    ProtectedApps protectedApps_;
    SettingsFollower follower_; ///< last: it reloads the others
};

} // namespace tidwen
