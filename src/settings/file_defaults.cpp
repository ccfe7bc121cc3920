#include "settings/file_defaults.h"

#include "settings/user_folder.h"

namespace tidwen {

namespace {

using Fault = SharedFile::Fault;

constexpr PropertyListLimits limits{.bytes = 4u << 20, .nodes = 200'000, .depth = 32};

/// Nothing unless the bytes are a dictionary.
std::optional<PropertyListDictionary> parse(std::string_view bytes) {
    const auto list = parsePropertyList(bytes, limits);
    if (!list || !list->asDictionary()) return std::nullopt;
    return *list->asDictionary();
}

/// XML, which people can read and mend, unless the values hold what XML cannot (control characters, say).
/// Nothing when no form gives the same values back: they would be lost at the next start.
std::optional<std::string> serialized(const PropertyListDictionary& values) {
    for (const auto write : {writeXmlPropertyList, writeBinaryPropertyList})
        if (auto bytes = write(values); parse(bytes) == values) return bytes;
    return std::nullopt;
}

} // namespace

FileDefaults::FileDefaults(const std::filesystem::path& file, Log& log, FolderEvents* folders)
    : file_(file), log_(log), folders_(folders), version_(tl::unexpected(Fault::missing)) {}

std::optional<PropertyListValue> FileDefaults::value(const std::string& key) const {
    const std::lock_guard guard(mutex_);
    refresh();
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

bool FileDefaults::setValue(const std::string& key, const std::optional<PropertyListValue>& value) {
    return update(key, [&](const auto&) { return value; });
}

bool FileDefaults::update(const std::string& key, const Change& change) {
    const std::lock_guard guard(mutex_);
    const auto lock = file_.lock();
    if (!lock.isHeld() || !reload(true)) {
        log_.error("Settings cannot be changed: {}", file_.path().string());
        return false;
    }
    auto values = values_;
    const auto stored = values.find(key);
    const auto value = change(stored == values.end() ? std::nullopt : std::optional(stored->second));
    if (value)
        values.insert_or_assign(key, *value);
    else
        values.erase(key);
    if (values == values_) return true;

    const auto bytes = serialized(values);
    if (!bytes || !file_.replace(*bytes)) {
        log_.error("Settings could not be written: {}", file_.path().string());
        return false;
    }
    values_ = std::move(values);
    version_ = file_.version();
    return true;
}

std::unique_ptr<FolderEvents::Watch> FileDefaults::watch(std::function<void()> changed) {
    // The folder, because a file that is replaced is another file each time.
    const auto folder = std::filesystem::absolute(file_.path()).parent_path();
    return folders_ ? folders_->watch(Path(folder.string()), std::move(changed)) : nullptr;
}

void FileDefaults::refresh() const {
    if (file_.version() == version_) return;
    const auto lock = file_.lock();
    reload(lock.isHeld());
}

/// Reads the file, whatever is known of it. False when it is there and stays there unread. Only with the lock
/// is a damaged file set aside: without it, a sound one of another process might have taken its place.
bool FileDefaults::reload(bool isLocked) const {
    values_.clear();
    version_ = file_.version(); // before reading: a change in between is then seen the next time
    const auto bytes = file_.read(limits.bytes);
    if (!bytes && bytes.error() == Fault::missing) return true;
    if (!bytes) {
        log_.error("Settings cannot be read: {}", file_.path().string());
        return false;
    }
    if (auto values = parse(*bytes)) {
        values_ = std::move(*values);
        return true;
    }
    const auto kept = isLocked ? file_.setAside("damaged") : std::nullopt;
    log_.error("Settings are damaged and kept as {}", (kept ? *kept : file_.path()).string());
    return kept.has_value();
}

std::filesystem::path FileDefaults::defaultFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "tidwen/settings.plist";
}

} // namespace tidwen
