#include "base/path.h"
#include "base/property_list.h"
#include "platform/file_system.h"
#include "platform/launchd.h"
#include "platform/property_list_file.h"
#include "posix/patient_lock.h"
#include "volume/volume_sources.h"

#include <cstdint>
#include <fmt/format.h>
#include <map>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

/// Label → true for a disabled job, or, in the form of OS X 10.9, label → {Disabled: boolean}.
void addOverrides(const FileSystem& files, const Path& file, std::map<std::string, bool>& overrides) {
    const auto list = readPropertyList(files, file);
    const auto* labels = list ? list->asDictionary() : nullptr;
    if (!labels) return;
    for (const auto& [label, value] : *labels) {
        const auto* nested = value.find("Disabled");
        if (const auto isDisabled = nested ? nested->asBool() : value.asBool())
            overrides[label] = *isDisabled;
    }
}

const Path overrideFolder("/private/var/db/com.apple.xpc.launchd");

std::string overrideFileName(bool isSystemDomain, std::uint32_t userID) {
    return isSystemDomain ? std::string("disabled.plist") : fmt::format("disabled.{}.plist", userID);
}

} // namespace

std::map<std::string, bool> VolumeLaunchd::disabledOverrides(bool isSystemDomain) const {
    const Path databases("/private/var/db");
    std::map<std::string, bool> overrides;
    const auto oldFolder = isSystemDomain ? std::string("com.apple.launchd")
                                          : fmt::format("com.apple.launchd.peruser.{}", user_.userID);
    addOverrides(files_, databases / "launchd.db" / oldFolder / "overrides.plist", overrides);
    addOverrides(files_, overrideFolder / overrideFileName(isSystemDomain, user_.userID), overrides);
    return overrides;
}

tl::expected<void, LaunchdError> VolumeLaunchd::setEnabled(bool on, const std::string& label, const Path&,
                                                           bool isSystemDomain) {
    const auto failed = [](const FileError& error) {
        return tl::unexpected(
            LaunchdError{LaunchdError::Kind::failed, {std::string(failureKey(error.fault))}});
    };
    if (const auto made = files_.createDirectories(overrideFolder); !made) return failed(made.error());
    const auto lock = lockPatiently(files_, overrideFolder);
    if (!lock) return failed(lock.error());
    const Path file = overrideFolder / overrideFileName(isSystemDomain, user_.userID);
    PropertyListDictionary overrides;
    if (files_.exists(file)) {
        const auto list = readPropertyList(files_, file);
        // Overwriting an unreadable list would change every other job in it.
        if (!list || !list->asDictionary()) return failed({FileFault::io, file, 0});
        overrides = *list->asDictionary();
    }
    overrides.insert_or_assign(label, PropertyListValue(!on));
    const auto written =
        files_.replaceFile(file, writeBinaryPropertyList(std::move(overrides)), NewFileMode::likeExisting);
    if (!written) return failed(written.error());
    return {};
}

} // namespace tidwen
