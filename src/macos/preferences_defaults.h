#pragma once

#include "base/log.h"
#include "platform/defaults.h"

#include <string>

namespace tidwen {

/// A domain of the user defaults of the running Mac (CFPreferences). May be used from any thread. Changes of
/// other processes are seen at the next look; macOS has no way to keep them out between two calls, so of two
/// processes that update one key at once the later one wins.
class PreferencesDefaults : public Defaults {
  public:
    /// `folders`: of this machine, for `watch`.
    PreferencesDefaults(std::string domain, Log& log, FolderEvents& folders)
        : domain_(std::move(domain)), log_(log), folders_(folders) {}

    std::optional<PropertyListValue> value(const std::string& key) const override;
    /// Judged by the domain's file: of one that it cannot read the system only says that nothing is set.
    std::optional<Message> problem() const override;
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    /// By the folder in which macOS writes all domains down, some seconds after a change.
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

  private:
    std::string domain_;
    Log& log_;
    FolderEvents& folders_;
};

} // namespace tidwen
