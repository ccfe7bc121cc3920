#pragma once

#include "base/byte_sum.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "removal/removal_plan.h"
#include "removal/removal_report.h"

#include <optional>
#include <vector>

/// What a run leaves beside the items that it took.
namespace tidwen {

/// Links in the folders of applications that lead to one of the applications chosen. Asked before the run:
/// afterwards nobody can tell where they led.
std::vector<Path> linksToApplications(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                      const UserEnvironment& user);

/// Folders that held an application that was taken and hold nothing now, such as that of a suite; not those
/// that must stay.
std::vector<Path> emptiedFolders(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                 const UserEnvironment& user);

/// What stays once a run is over, sorted by how it can be taken still; what several of them found stands
/// once.
std::vector<Remainder> remaindersAfter(std::vector<Remainder> left, const FileSystem& files);

/// What the run moved takes on the disk; nothing when it moved nothing.
ByteSum movedBytes(const RemovalReport& report, const FileSystem& files);

} // namespace tidwen
