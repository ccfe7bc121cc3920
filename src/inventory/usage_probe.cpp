#include "inventory/usage_probe.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/usage_records.h"
#include "posix/item_description.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {
namespace {

constexpr std::size_t attributeLength = 16;
constexpr std::int64_t year9999 = 253'402'300'800; // in seconds since 1970

std::optional<Timestamp> modified(const FileSystem& files, const Path& path) {
    const auto info = files.info(path);
    if (!info) return std::nullopt;
    return Timestamp(std::chrono::seconds(info->modifiedNanoseconds / 1'000'000'000));
}

/// Where applications write while they are used. A folder's own date changes with its entries.
std::vector<Path> dataPlaces(const UserEnvironment& user, const InstalledApp& app) {
    const Path library = user.libraryFolder();
    const std::string& id = app.bundleID;
    return {library / "Preferences" / (id + ".plist"),
            library / "Saved Application State" / (id + ".savedState"),
            library / "Containers" / id / "Data/Library/Preferences" / (id + ".plist"),
            library / "Caches" / id,
            library / "HTTPStorages" / id,
            library / "Application Support" / id,
            library / "Application Support" / app.name};
}

} // namespace

std::optional<Timestamp> parseLastUsedDate(std::string_view attribute) {
    if (attribute.size() != attributeLength) return std::nullopt;
    std::uint64_t seconds = 0;
    for (int i = 7; i >= 0; --i)
        seconds = seconds << 8 | static_cast<unsigned char>(attribute[static_cast<std::size_t>(i)]);
    if (seconds == 0 || seconds > static_cast<std::uint64_t>(year9999)) return std::nullopt;
    return Timestamp(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

AppUsage probeUsage(const FileSystem& files, const RunningApplications& running, const UsageRecords* records,
                    const UserEnvironment& user, const InstalledApp& app) {
    AppUsage usage;
    usage.isRunning = running.isRunning(app.bundleID);
    const auto record = records ? records->of(app.url) : UsageRecord();
    usage.useCount = record.useCount;
    const auto attribute = files.extendedAttribute(app.url, "com.apple.lastuseddate#PS");
    const auto onBundle = attribute ? parseLastUsedDate(*attribute) : std::nullopt;
    if (const auto date = std::max(onBundle, record.lastUsed)) { // an absent one is the least
        usage.evidence = {UsageEvidence::Kind::launchRecord, date};
        return usage;
    }
    std::optional<Timestamp> newest;
    for (const auto& place : dataPlaces(user, app))
        if (const auto date = modified(files, place)) newest = std::max(newest.value_or(*date), *date);
    if (newest) usage.evidence = {UsageEvidence::Kind::appData, newest};
    return usage;
}

} // namespace tidwen
