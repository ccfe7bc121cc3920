#include "sweep/living_jobs.h"

#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "scan/applications/bundle_places.h"
#include "scan/applications/job_program.h"
#include "scan/applications/launch_item.h"
#include "sweep/known_owners.h"

#include <algorithm>

namespace tidwen {
namespace {

enum class Life { dead, helper, living };

bool isPrivilegedHelper(const Path& program) {
    return program.isWithinIgnoringCase(Path("/Library/PrivilegedHelperTools"));
}

Life lifeOf(JobPrograms& programs, const LaunchItem& job) {
    if (!job.programPath)
        return Life::living; // it may be started by something the property list does not name
    const auto program = programs.find(*job.programPath);
    if (program == JobProgram::gone) return Life::dead;
    const bool isThere = program == JobProgram::present;
    return isThere && isPrivilegedHelper(Path(*job.programPath)) ? Life::helper : Life::living;
}

/// The location of the program, existing or not, without links.
Path realPlace(const FileSystem& files, const Path& program) {
    Path there = program.standardized();
    std::string rest;
    for (; !there.isRoot(); there = there.parent()) {
        if (const auto real = files.resolve(there)) return Path(real->string() + rest);
        rest = "/" + there.lastComponent() + rest;
    }
    return program;
}

/// It serves an installed application, by its own declaration or by its program's location: an update may
/// have left the job behind, or may restore its program.
bool worksForInstalled(const FileSystem& files, const LaunchItem& job, const KnownOwners& installed) {
    if (job.programPath) {
        const Path program(*job.programPath);
        if (installed.ownsPlace(program) || installed.ownsPlace(realPlace(files, program))) return true;
    }
    const auto identifiers = readAssociatedBundleIDs(files, job.plist);
    return std::any_of(identifiers.begin(), identifiers.end(),
                       [&](const std::string& identifier) { return installed.claims(identifier); });
}

/// Folders of jobs in the order in which launchd reads them, other users' last.
std::vector<Path> jobFolders(const FileSystem& files, const UserEnvironment& user) {
    std::vector<Path> folders = {user.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                                 Path("/Library/LaunchDaemons")};
    std::vector<Path> unreadable; // the search for applications reports them, too
    for (const auto& home : homesOnDisk(files, user, unreadable))
        if (home != user.home) folders.push_back(home / "Library/LaunchAgents");
    return folders;
}

} // namespace

LivingJobs listLivingJobs(const FileSystem& files, const UserEnvironment& user, const KnownOwners& installed,
                          const StopToken& stop) {
    LivingJobs living;
    const BudgetedFiles budgeted(files);
    JobPrograms programs(budgeted);
    for (const auto& folder : jobFolders(budgeted, user))
        for (const auto& job : listLaunchItems(budgeted, folder, false, stop, &living.unreadable)) {
            if (stop.stopRequested()) return living;
            const auto life = lifeOf(programs, job);
            if (life == Life::living || worksForInstalled(budgeted, job, installed)) {
                living.labels.push_back(lowercased(job.label));
            } else if (life == Life::helper) {
                living.helpers.push_back(lowercased(job.label));
                living.helpers.push_back(lowercased(Path(*job.programPath).lastComponent()));
            } else {
                continue;
            }
            for (auto& place : placesOfProgram(budgeted, job))
                living.programs.push_back(std::move(place));
        }
    return living;
}

} // namespace tidwen
