#include "removal/removal_run.h"

#include "removal/removal_aftermath.h"
#include "removal/removal_verification.h"

#include <algorithm>
#include <utility>

namespace tidwen {

FileResult<RemovalReport> RemovalRun::carryOut(const RemovalChoice& choice,
                                               const std::vector<RemovalTarget>& targets) {
    const auto date = ports_.clock.now();
    std::vector<AppRecord> apps;
    apps.reserve(targets.size());
    for (const auto& target : targets)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = createQuarantineFolder(apps, date, user_, ports_.files);
    if (!layout) return tl::unexpected(layout.error());
    const auto plan = buildRemovalPlan(targets, *layout, choice.mode(), ports_.texts);
    auto links = linksToApplications(targets, ports_.files, user_);
    auto report = ports_.executor.execute(plan, *layout, apps, choice.mode(), date);
    if (!report) return report;
    if (manifestEntries(plan).empty()) dropRecord(*report);
    report->verification = verifyRemoval(targets, ports_.audit);
    report->reclaimedBytes = movedBytes(*report, ports_.files);
    report->emptiedFolders = emptiedFolders(targets, ports_.files, user_);
    std::erase_if(links, [&](const Path& link) { return ports_.files.resolve(link).has_value(); });
    report->deadLinks = std::move(links);
    report->skippedNames = choice.findings().skippedNames();
    report->unseen = choice.findings().unseen();
    report->left = remaindersAfter(choice.remainders(), ports_.files);
    return report;
}

/// A run of which nothing could be put back needs no folder once it is over, and no place in the history.
void RemovalRun::dropRecord(RemovalReport& report) const {
    if (report.manifestFailure || !ports_.files.removeFile(report.manifestURL)) return;
    if (!ports_.files.removeEmptyDirectory(report.quarantineRoot)) return;
    report.quarantineRoot = report.manifestURL = Path();
}

} // namespace tidwen
