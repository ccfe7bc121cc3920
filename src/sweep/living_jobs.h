#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <string>
#include <vector>

namespace tidwen {

class KnownOwners;

/// The launchd jobs that may still work. A job is dead only when its program is known to be gone and no
/// installed application is said to own it.
struct LivingJobs {
    std::vector<std::string> labels; ///< in lower case
    /// In lower case, of jobs that start a privileged helper, and of these: they live, and say nothing of
    /// their maker's applications, since such a tool stays when its application is dragged away.
    std::vector<std::string> helpers;
    /// What they start, as spelled and without links: the program, and the paths that it is handed.
    std::vector<Path> programs;
    std::vector<Path> unreadable; ///< folders and property lists that may hold other jobs
};

/// The jobs of the machine and of every home on it: what lies in "/Users/Shared" works for everybody.
LivingJobs listLivingJobs(const FileSystem& files, const UserEnvironment& user, const KnownOwners& installed,
                          const StopToken& stop = {});

} // namespace tidwen
