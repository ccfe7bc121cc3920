#pragma once

#include "base/log.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"

#include <vector>

namespace tidwen {

/// Finds runs that were cut off (a journal and no manifest), settles half-made moves and writes each a
/// manifest of what really lies in quarantine. Gives the manifests written; an unreadable journal is logged
/// and left for the next time.
std::vector<Manifest> recoverInterruptedRemovals(const UserEnvironment& user, FileSystem& files,
                                                 const Clock& clock, Log& log);

} // namespace tidwen
