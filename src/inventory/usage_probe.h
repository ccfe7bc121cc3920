#pragma once

#include "base/timestamp.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/usage_records.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// Determines when an application was last used: the date that the system recorded, on the bundle or, the
/// later of both, in `records` (null on a volume); else that of the newest file the application wrote to the
/// user's Library, else none.
AppUsage probeUsage(const FileSystem& files, const RunningApplications& running, const UsageRecords* records,
                    const UserEnvironment& user, const InstalledApp& app);

/// Parses the extended attribute "com.apple.lastuseddate#PS": 16 bytes, little-endian, seconds and
/// nanoseconds since 1970. nullopt for another length or a date outside any file system's range.
std::optional<Timestamp> parseLastUsedDate(std::string_view attribute);

} // namespace tidwen
