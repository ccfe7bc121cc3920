#pragma once

#include "base/letter_case.h"
#include "base/message.h"
#include "base/observable.h"
#include "platform/defaults.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The list of protected applications as stored at one moment: a value, for work on any thread.
struct Protection {
    std::set<std::string, AnyCase> bundleIDs = {};
    std::optional<Message> problem = {}; ///< why the list is unknown, so that nothing may be removed

    bool contains(const std::string& bundleID) const { return bundleIDs.contains(bundleID); }
    /// The same for what has no bundle: also protected with an application whose identifier it continues.
    bool containsOwner(const std::string& bundleID) const;
};

/// Reads the list; on any thread if `defaults` allows it.
Protection readProtection(const Defaults& defaults);

/// The user's list of applications that must not be removed. Main thread only.
///
/// Letter case is ignored: an identifier may have been entered before its application was installed, and what
/// its user considers protected is never taken.
class ProtectedApps {
  public:
    static constexpr const char* defaultsKey = "tidwen.protectedBundleIDs";

    explicit ProtectedApps(Defaults& defaults);

    /// As stored; several may differ only in letter case.
    const std::set<std::string>& bundleIDs() const { return bundleIDs_; }
    bool contains(const std::string& bundleID) const { return protects_.contains(bundleID); }
    /// As `Protection::containsOwner`.
    bool containsOwner(const std::string& bundleID) const {
        return Protection{protects_}.containsOwner(bundleID);
    }
    /// Why the list is unknown, so that nothing may be removed.
    std::optional<Message> problem() const;
    /// Adds the identifier, or removes it in every spelling, and stores the list sorted, merged with changes
    /// by other processes. False, with nothing changed, when it could not be stored.
    bool toggle(const std::string& bundleID);
    /// The same for several in one change: adds all that are missing, or removes all.
    bool set(const std::vector<std::string>& bundleIDs, bool areProtected);
    /// Reads the list again after another process changed it. If it cannot be read, this list stays as it
    /// was.
    void reload();

    /// Emitted when the list has changed, with the identifiers that were added or taken off.
    Signal<const std::set<std::string>&> changed;

  private:
    void show(std::set<std::string> bundleIDs);

    Defaults& defaults_;
    std::set<std::string> bundleIDs_;
    std::set<std::string, AnyCase> protects_; ///< the same
};

} // namespace tidwen
