#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/property_list.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"
#include "settings/shared_file.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace tidwen {

/// Settings in one property list of this machine's user, for systems without a defaults database.
///
/// Several processes may share the file: it is read again when it has changed on disk, without waiting for a
/// lock, and a value is merged into the present content under a lock ("<name>.lock" beside it). After a crash
/// the file is the old or the new one. A file that cannot be read or is not a dictionary is left alone:
/// nothing can be set until someone repairs or moves it, because what it protects would be forgotten.
/// Thread-safe.
class FileDefaults : public Defaults {
  public:
    /// `folders`: of this machine ("/" is its root); without it `watch` reports nothing. `patience`: how long
    /// a change waits for another process that is writing.
    FileDefaults(const std::filesystem::path& file, Log& log, FolderEvents* folders = nullptr,
                 std::chrono::milliseconds patience = SharedFile::usualPatience);

    std::optional<PropertyListValue> value(const std::string& key) const override;
    std::optional<Message> problem() const override;
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    bool update(const std::string& key, const Change& change) override;
    Message whyNotStored() const override;
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

    /// "$XDG_CONFIG_HOME/tidwen/settings.plist", else "~/.config/tidwen/settings.plist".
    static std::filesystem::path defaultFile();

  private:
    void refresh() const;
    void reload() const;
    std::pair<PropertyListDictionary, std::optional<Message>> readAgain() const;
    bool refuse(Message why);

    SharedFile file_;
    Log& log_;
    FolderEvents* folders_;
    std::chrono::milliseconds patience_;
    mutable std::mutex mutex_;
    mutable tl::expected<SharedFile::Version, SharedFile::Fault>
        version_; ///< version of the file in `values_`
    mutable PropertyListDictionary values_;
    mutable std::optional<Message> problem_; ///< `values_` is empty then
    Message whyNotStored_{"settings.store.failed"};
};

} // namespace tidwen
