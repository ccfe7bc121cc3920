#include "app/models/user_settings.h"

#include "base/executor.h"
#include "platform/defaults.h"

namespace tidwen {

UserSettings::UserSettings(Defaults& defaults, Executor& main, std::vector<std::string> languages)
    : problem(defaults.problem()),
      defaults_(defaults),
      preferences_(defaults, std::move(languages)),
      protectedApps_(defaults),
      follower_(defaults, main, [this] { reload(); }) {}

bool UserSettings::set(std::string_view name, std::string_view value) {
    problem.set(defaults_.problem());
    if (problem.get()) return false;
    const bool isKnown = preferences_.set(name, value);
    // Read what was stored, as another process would.
    const bool isStored = isKnown && AppPreferences(defaults_).get(name) == value;
    failure.set(isStored ? std::nullopt : std::optional(defaults_.whyNotStored()));
    if (isStored)
        changed.emit();
    else
        reload();
    return isStored;
}

void UserSettings::setProtected(const std::string& bundleID, bool isProtected) {
    const bool isStored = protectedApps_.set({bundleID}, isProtected);
    failure.set(isStored ? std::nullopt : std::optional(defaults_.whyNotStored()));
    changed.emit();
}

void UserSettings::reload() {
    problem.set(defaults_.problem());
    // Settings that cannot be read are not at their defaults: what is shown stays.
    if (!problem.get()) {
        preferences_.reload();
        protectedApps_.reload();
    }
    changed.emit();
}

} // namespace tidwen
