#include "macos/preferences_defaults.h"

#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "macos/core_foundation.h"
#include "platform/folder_events.h"
#include "settings/settings_file.h"
#include "settings/shared_file.h"
#include "settings/user_folder.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace tidwen {

namespace {

std::filesystem::path fileOf(const std::string& domain) {
    return userHome() / "Library/Preferences" / (domain + ".plist");
}

/// Both directions use the binary format, so that one parser validates every property list.
CFOwned<CFPropertyListRef> toSystem(const PropertyListValue& value) {
    const auto bytes = writeBinaryPropertyList(value);
    const CFOwned data(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                    static_cast<CFIndex>(bytes.size())));
    if (!data) return CFOwned<CFPropertyListRef>(nullptr);
    return CFOwned(
        CFPropertyListCreateWithData(nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

std::optional<PropertyListValue> fromSystem(CFPropertyListRef value) {
    const CFOwned data(
        CFPropertyListCreateData(nullptr, value, kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    if (!data) return std::nullopt;
    const std::string_view bytes(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
                                 static_cast<std::size_t>(CFDataGetLength(data.get())));
    if (auto list = parsePropertyList(bytes)) return std::move(*list);
    return std::nullopt;
}

} // namespace

std::optional<PropertyListValue> PreferencesDefaults::value(const std::string& key) const {
    const auto domain = makeString(domain_), name = makeString(key);
    if (!domain || !name) return std::nullopt;
    CFPreferencesAppSynchronize(domain.get()); // otherwise changes by other processes stay unseen
    const CFOwned stored(CFPreferencesCopyAppValue(name.get(), domain.get()));
    return stored ? fromSystem(stored.get()) : std::nullopt;
}

std::optional<Message> PreferencesDefaults::problem() const {
    const auto read = readSettings(SharedFile(fileOf(domain_)));
    return read ? std::nullopt : std::optional(read.error());
}

bool PreferencesDefaults::setValue(const std::string& key, const std::optional<PropertyListValue>& value) {
    const auto domain = makeString(domain_), name = makeString(key);
    const auto wanted = value ? toSystem(*value) : CFOwned<CFPropertyListRef>(nullptr);
    bool isStored = domain && name && (wanted || !value);
    if (isStored) {
        CFPreferencesSetAppValue(name.get(), wanted.get(), domain.get()); // null removes the key
        isStored = CFPreferencesAppSynchronize(domain.get());
    }
    if (!isStored) log_.error("Settings could not be written: {}", domain_);
    return isStored;
}

bool PreferencesDefaults::update(const std::string& key, const Change& change) {
    const SharedFile turns(userHome() / "Library/Application Support/Tidwen/settings");
    const auto turn = turns.lock();
    if (!turn.isHeld())
        log_.error("Settings are not written: another process holds {}", turns.path().string());
    return turn.isHeld() && setValue(key, change(value(key)));
}

std::unique_ptr<FolderEvents::Watch> PreferencesDefaults::watch(std::function<void()> changed) {
    return events_.watchFile(Path(fileOf(domain_).string()), std::move(changed));
}

} // namespace tidwen
