#include "platform/property_list_file.h"
#include "volume/volume_sources.h"

#include <fmt/format.h>

namespace tidwen {

namespace {

/// Label → true when the job is switched off, or, as OS X 10.9 wrote it, label → {Disabled: boolean}.
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

} // namespace

std::map<std::string, bool> VolumeLaunchd::disabledOverrides(bool isSystemDomain) const {
    const Path databases("/private/var/db");
    std::map<std::string, bool> overrides;
    const auto oldFolder = isSystemDomain ? std::string("com.apple.launchd")
                                          : fmt::format("com.apple.launchd.peruser.{}", user_.userID);
    addOverrides(files_, databases / "launchd.db" / oldFolder / "overrides.plist", overrides);
    const auto name =
        isSystemDomain ? std::string("disabled.plist") : fmt::format("disabled.{}.plist", user_.userID);
    addOverrides(files_, databases / "com.apple.xpc.launchd" / name, overrides);
    return overrides;
}

} // namespace tidwen
