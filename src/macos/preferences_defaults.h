#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/property_list.h"
#include "macos/fs_events.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidwen {

/// A user defaults domain of the running Mac (CFPreferences). Thread-safe. Changes by other processes are
/// seen at the next read. macOS cannot lock a domain between two calls: beside another program that writes
/// it, the later one wins.
class PreferencesDefaults : public Defaults {
  public:
    PreferencesDefaults(std::string domain, Log& log) : domain_(std::move(domain)), log_(log) {}

    std::optional<PropertyListValue> value(const std::string& key) const override;
    /// Checks the domain's file, because for an unreadable file the system only reports that nothing is set.
    std::optional<Message> problem() const override;
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    /// Processes of this program take turns.
    bool update(const std::string& key, const Change& change) override;
    /// By the file in which macOS writes the domain down, some seconds after a change.
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

  private:
    std::string domain_;
    Log& log_;
    FsEvents events_{"/"};
};

} // namespace tidwen
