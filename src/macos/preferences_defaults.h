#pragma once

#include "base/log.h"
#include "platform/defaults.h"

#include <string>

namespace tidwen {

/// A user defaults domain of the running Mac (CFPreferences). Thread-safe. Changes by other processes are
/// seen at the next read. macOS cannot lock a domain between two calls, so if two processes update one key at
/// once the later one wins.
class PreferencesDefaults : public Defaults {
  public:
    /// `folders`: of this machine, for `watch`.
    PreferencesDefaults(std::string domain, Log& log, FolderEvents& folders)
        : domain_(std::move(domain)), log_(log), folders_(folders) {}

    std::optional<PropertyListValue> value(const std::string& key) const override;
    /// Checks the domain's file, because for an unreadable file the system only reports that nothing is set.
    std::optional<Message> problem() const override;
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    /// Watches the folder where macOS writes all domains, some seconds after a change.
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

  private:
    std::string domain_;
    Log& log_;
    FolderEvents& folders_;
};

} // namespace tidwen
