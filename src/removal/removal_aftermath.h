#pragma once

#include "base/byte_sum.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "removal/chosen_items.h"
#include "removal/removal_plan.h"
#include "removal/removal_report.h"

#include <optional>
#include <vector>

/// What a run leaves besides the items it moved.
namespace tidwen {

/// Links in the applications folders to one of the selected applications. Call it before the run: afterwards
/// their targets are unknown.
std::vector<Path> linksToApplications(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                      const UserEnvironment& user);

/// Folders that contained a removed application and are empty now, such as that of a suite; not those that
/// must stay.
std::vector<Path> emptiedFolders(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                 const UserEnvironment& user);

/// The disk space of what the run moved; nothing if it moved nothing.
ByteSum movedBytes(const RemovalReport& report, const FileSystem& files);

} // namespace tidwen
