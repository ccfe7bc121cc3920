#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// The launchd jobs that may still run. A job is dead only when its program is known to be gone and no
/// installed application is declared as its owner.
struct LivingJobs {
    std::vector<std::string> labels; ///< in lower case
    /// In lower case: labels of jobs that start a privileged helper, and identifiers of these helpers. They
    /// are in use but do not imply that their vendor's applications are, because such a tool stays when its
    /// application is dragged to the Trash.
    std::vector<std::string> helpers;
    /// What they start, as written and with links resolved: the program, and the paths passed to it.
    std::vector<Path> programs;
    std::vector<Path> unreadable; ///< folders and property lists that may contain further jobs
};

/// The jobs of the machine and of every home on it: what lies in "/Users/Shared" serves all users.
LivingJobs listLivingJobs(const FileSystem& files, const UserEnvironment& user, const KnownOwners& installed,
                          const StopToken& stop = {});

} // namespace tidwen
