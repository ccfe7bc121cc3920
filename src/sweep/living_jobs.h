#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Labels, in lower case, of the launchd jobs that may still work. A job is dead only when its program is
/// known to be gone and no installed application is said to own it. A tool in the folder of privileged
/// helpers keeps no job alive: it stays when its application is dragged away.
std::vector<std::string> listLivingJobs(const FileSystem& files, const UserEnvironment& user,
                                        const KnownOwners& installed, const StopToken& stop = {});

} // namespace tidwen
