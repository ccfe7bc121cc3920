#include "settings/file_defaults.h"

#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "platform/folder_events.h"
#include "settings/settings_file.h"
#include "settings/user_folder.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace tidwen {

FileDefaults::FileDefaults(const std::filesystem::path& file, Log& log, FolderEvents* folders,
                           std::chrono::milliseconds patience)
    : file_(file),
      log_(log),
      folders_(folders),
      patience_(patience),
      version_(tl::unexpected(SharedFile::Fault::missing)) {}

std::optional<PropertyListValue> FileDefaults::value(const std::string& key) const {
    const std::lock_guard guard(mutex_);
    refresh();
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

std::optional<Message> FileDefaults::problem() const {
    const std::lock_guard guard(mutex_);
    refresh();
    return problem_;
}

bool FileDefaults::setValue(const std::string& key, const std::optional<PropertyListValue>& value) {
    return update(key, [&](const auto&) { return value; });
}

/// Readers wait neither for the lock nor for the disk; the lock also keeps other changes of this process out.
bool FileDefaults::update(const std::string& key, const Change& change) {
    const auto lock = file_.lock(patience_);
    if (lock.isBusy()) return refuse({"settings.store.busy %@", {file_.path().string()}});
    if (!lock.isHeld()) return refuse(whyNotWritable(file_.path()));
    const auto [present, problem] = readAgain();
    if (problem) return refuse(*problem);
    auto values = present;
    const auto stored = values.find(key);
    const auto value = change(stored == values.end() ? std::nullopt : std::optional(stored->second));
    if (value)
        values.insert_or_assign(key, *value);
    else
        values.erase(key);
    if (values == present) return true;

    const auto bytes = settingsBytes(values);
    if (!bytes || !file_.replace(*bytes)) return refuse(whyNotWritable(file_.path()));
    const std::lock_guard guard(mutex_);
    values_ = std::move(values);
    version_ = file_.version();
    return true;
}

std::pair<PropertyListDictionary, std::optional<Message>> FileDefaults::readAgain() const {
    const std::lock_guard guard(mutex_);
    reload();
    return {values_, problem_};
}

/// Whoever asked for the change tells it.
bool FileDefaults::refuse(Message why) {
    log_.warning("Settings were not changed: {}", file_.path().string());
    const std::lock_guard guard(mutex_);
    whyNotStored_ = std::move(why);
    return false;
}

Message FileDefaults::whyNotStored() const {
    const std::lock_guard guard(mutex_);
    return whyNotStored_;
}

std::unique_ptr<FolderEvents::Watch> FileDefaults::watch(std::function<void()> changed) {
    // The folder, because replacing a file creates another one.
    const auto folder = std::filesystem::absolute(file_.path()).parent_path();
    return folders_ ? folders_->watch(Path(folder.string()), std::move(changed)) : nullptr;
}

void FileDefaults::refresh() const {
    // A change of owner or mode makes a file readable without changing its version.
    if (problem_ || file_.version() != version_) reload();
}

void FileDefaults::reload() const {
    version_ = file_.version(); // before reading, so that a change in between is detected next time
    auto read = readSettings(file_);
    auto problem = read ? std::nullopt : std::optional(std::move(read.error()));
    if (problem && problem != problem_) log_.warning("Settings cannot be read: {}", file_.path().string());
    problem_ = std::move(problem);
    values_ = read ? std::move(*read) : PropertyListDictionary();
}

std::filesystem::path FileDefaults::defaultFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "tidwen/settings.plist";
}

} // namespace tidwen
