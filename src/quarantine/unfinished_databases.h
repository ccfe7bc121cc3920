#pragma once

#include "platform/file_system.h"
#include "platform/user_environment.h"

namespace tidwen {

/// Removes what a reset of permissions on a volume left when it was cut off while it replaced a privacy
/// database: a complete copy of that database. Leaves alone what another process is replacing now.
void dropUnfinishedDatabases(const UserEnvironment& user, FileSystem& files);

} // namespace tidwen
