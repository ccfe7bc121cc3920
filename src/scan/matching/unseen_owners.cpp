#include "scan/matching/unseen_owners.h"

#include "base/text.h"
#include "scan/applications/job_program.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>

namespace tidwen {

namespace {

bool mayStillStart(const ScanContext& context, const std::vector<LaunchItem>& jobs) {
    JobPrograms programs(context.files);
    return std::ranges::any_of(jobs, [&](const LaunchItem& job) {
        return context.matcher.isOwnIdentifier(job.label)
               && (!job.programPath || programs.find(*job.programPath) != JobProgram::gone);
    });
}

bool isSurelyOwn(const ResidueMatcher& matcher, const Trace& trace) {
    if (trace.category == TraceCategory::application || trace.category == TraceCategory::permissions)
        return true;
    if (trace.reason.evidence == MatchReason::Evidence::embedded) return true;
    const auto* path = movedPath(trace.action);
    return path && trace.reason.kind == MatchReason::Kind::exactBundleID
           && folded(withoutWrappingExtension(path->lastComponent())) == folded(matcher.target().bundleID);
}

} // namespace

void markUnseenOwners(const ScanContext& context, const std::vector<LaunchItem>& jobs, ScanResult& result) {
    const bool isGone = result.target.bundleURL.isRoot();
    const bool areAllKnown =
        isGone ? result.owners.isComplete() && !mayStillStart(context, jobs) : result.owners.seesApplications;
    if (areAllKnown) return;
    for (auto& trace : result.traces)
        trace.ownerUnsure = isGone || !isSurelyOwn(context.matcher, trace);
}

} // namespace tidwen
