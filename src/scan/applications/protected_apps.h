#pragma once

#include "base/letter_case.h"
#include "base/observable.h"
#include "platform/defaults.h"
#include "scan/applications/app_target.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The user's own list of applications that must not be removed. Owned by the main thread.
///
/// Letter case does not count: an identifier may have been typed before its application was there to give its
/// spelling, and what is protected in the eyes of its user is never taken.
class ProtectedApps {
  public:
    static constexpr const char* defaultsKey = "tidwen.protectedBundleIDs";

    explicit ProtectedApps(Defaults& defaults);

    /// As they were stored; several may differ in letter case alone.
    const std::set<std::string>& bundleIDs() const { return bundleIDs_; }
    bool contains(const std::string& bundleID) const { return protects_.contains(bundleID); }
    /// Why the list cannot be known, so that nothing may be removed.
    std::optional<Message> problem() const;
    /// Adds, or removes in every spelling, and stores the list sorted, with what other processes did to it
    /// since. False when it could not be stored (nothing changes).
    bool toggle(const std::string& bundleID);
    /// Reads the list again, after another process changed it. One that cannot be read leaves this one as it
    /// was.
    void reload();

    /// Told when the list became another one.
    Signal<> changed;

    struct Partition {
        std::vector<AppTarget> allowed;
        std::vector<AppTarget> protectedTargets;
    };
    /// Keeps the order of the input in both lists.
    Partition partition(std::vector<AppTarget> targets) const;

  private:
    void show(std::set<std::string> bundleIDs);

    Defaults& defaults_;
    std::set<std::string> bundleIDs_;
    std::set<std::string, AnyCase> protects_; ///< the same
};

} // namespace tidwen
