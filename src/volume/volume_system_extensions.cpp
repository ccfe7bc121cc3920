#include "base/path.h"
#include "base/property_list.h"
#include "platform/property_list_file.h"
#include "platform/system_extensions.h"
#include "volume/volume_sources.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

namespace {

/// The application that installed the extension: people know its name, not the extension's.
std::string displayName(const PropertyListValue& extension, const std::string& bundleID) {
    const auto* container = extension.find("container");
    const auto* bundle = container ? container->findString("bundlePath") : nullptr;
    return bundle && !bundle->empty() ? Path(*bundle).stem() : bundleID;
}

} // namespace

std::vector<SystemExtensionRecord> VolumeSystemExtensions::list() const {
    std::vector<SystemExtensionRecord> records;
    const auto database = readPropertyList(files_, Path("/Library/SystemExtensions/db.plist"));
    const auto* extensions = database ? database->find("extensions") : nullptr;
    if (!extensions || !extensions->asArray()) return records;
    std::set<std::string_view> known;
    for (const auto& extension : *extensions->asArray()) {
        const auto* bundleID = extension.findString("identifier");
        const auto* teamID = extension.findString("teamID");
        if (!bundleID || bundleID->empty() || !teamID) continue;
        // An update waiting for a restart is listed beside the version in use.
        if (known.insert(*bundleID).second)
            records.push_back({*teamID, *bundleID, displayName(extension, *bundleID)});
    }
    return records;
}

} // namespace tidwen
