#include "sweep/living_jobs.h"

#include "base/text.h"
#include "scan/job_program.h"
#include "scan/launch_item.h"
#include "sweep/known_owners.h"

#include <algorithm>

namespace tidwen {
namespace {

bool mayStart(JobPrograms& programs, const LaunchItem& job) {
    if (!job.programPath) return true; // started by what the property list does not name
    const auto program = programs.find(*job.programPath);
    if (program == JobProgram::present)
        return !Path(*job.programPath).isWithinIgnoringCase(Path("/Library/PrivilegedHelperTools"));
    return program != JobProgram::gone;
}

bool worksForInstalled(const FileSystem& files, const LaunchItem& job, const KnownOwners& installed) {
    const auto identifiers = readAssociatedBundleIDs(files, job.plist);
    return std::any_of(identifiers.begin(), identifiers.end(),
                       [&](const std::string& identifier) { return installed.claims(identifier); });
}

} // namespace

std::vector<std::string> listLivingJobs(const FileSystem& files, const UserEnvironment& user,
                                        const KnownOwners& installed, const StopToken& stop) {
    std::vector<std::string> labels;
    JobPrograms programs(files);
    for (const auto& folder : {user.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (const auto& job : listLaunchItems(files, folder, false, stop)) {
            if (stop.stopRequested()) return labels;
            if (mayStart(programs, job) || worksForInstalled(files, job, installed))
                labels.push_back(lowercased(job.label));
        }
    return labels;
}

} // namespace tidwen
