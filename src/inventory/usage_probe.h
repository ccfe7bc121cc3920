#pragma once

#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// Finds out when an application was last used: the date that the system keeps on the bundle, else the newest
/// of what the application itself wrote into the user's Library, else nothing.
AppUsage probeUsage(const FileSystem& files, const RunningApplications& running, const UserEnvironment& user,
                    const InstalledApp& app);

/// The date in an extended attribute "com.apple.lastuseddate#PS": 16 bytes, little-endian, seconds and
/// nanoseconds since 1970. Nothing for another length or a date that no file system holds.
std::optional<Timestamp> parseLastUsedDate(std::string_view attribute);

} // namespace tidwen
