#pragma once

#include "base/log.h"
#include "platform/defaults.h"
#include "settings/shared_file.h"

#include <filesystem>
#include <mutex>

namespace tidwen {

/// Settings in one property list of this machine's user, for systems without a defaults database.
///
/// Several processes may share the file: it is read again when it changed on the disk, and a value is set on
/// top of what stands there, under a lock ("<name>.lock" beside it). A crash leaves the old file or the new
/// one. A file that is no dictionary is kept as "<name>.damaged" (with a number when that is taken), and
/// defaults apply; one that cannot be read is left alone, and then nothing can be set.
/// May be used from any thread.
class FileDefaults : public Defaults {
  public:
    /// `folders`: of this machine ("/" is its root); without them `watch` tells of nothing.
    FileDefaults(const std::filesystem::path& file, Log& log, FolderEvents* folders = nullptr);

    std::optional<PropertyListValue> value(const std::string& key) const override;
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    bool update(const std::string& key, const Change& change) override;
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

    /// "$XDG_CONFIG_HOME/tidwen/settings.plist", else "~/.config/tidwen/settings.plist".
    static std::filesystem::path defaultFile();

  private:
    void refresh() const;
    bool reload(bool isLocked) const;

    SharedFile file_;
    Log& log_;
    FolderEvents* folders_;
    mutable std::mutex mutex_;
    mutable tl::expected<SharedFile::Version, SharedFile::Fault> version_; ///< of what `values_` holds
    mutable PropertyListDictionary values_;
};

} // namespace tidwen
