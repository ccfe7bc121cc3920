#include "removal/removal_run.h"

#include "base/path.h"
#include "base/step_progress.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "operations/stepwise_run.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "removal/chosen_items.h"
#include "removal/removal_aftermath.h"
#include "removal/removal_phases.h"
#include "removal/removal_plan.h"
#include "removal/removal_report.h"
#include "removal/removal_verification.h"
#include "removal/stay_reason.h"
#include "scan/applications/app_target.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/scan_result.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

/// Without the applications of which nothing may be taken.
std::vector<RemovalTarget> thoseToTake(const std::vector<RemovalTarget>& targets) {
    std::vector<RemovalTarget> taken;
    std::ranges::copy_if(targets, std::back_inserter(taken),
                         [](const RemovalTarget& each) { return !each.isRefusedWhole(); });
    return taken;
}

/// Resets of applications without permissions.
std::set<Uuid> emptyResets(const RemovalChoice& choice) {
    const auto& scanned = choice.findings().scanned();
    std::set<Uuid> empty;
    for (const auto& result : scanned)
        for (const auto& trace : result.traces)
            if (resetsNothing(trace, result)) empty.insert(trace.id);
    return empty;
}

} // namespace

FileResult<RemovalReport> RemovalRun::carryOut(const RemovalChoice& choice,
                                               const std::vector<RemovalTarget>& targets,
                                               const StepControl& control,
                                               const std::function<void(RemovalPhases)>& onPlanned) {
    const auto date = ports_.clock.now();
    const auto taken = thoseToTake(targets);
    std::vector<AppRecord> apps;
    apps.reserve(taken.size());
    for (const auto& target : taken)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = createQuarantineFolder(apps, date, user_, ports_.files);
    if (!layout) return tl::unexpected(layout.error());
    const auto plan = buildRemovalPlan(targets, *layout, choice.mode());
    if (onPlanned) onPlanned(ports_.executor.phases(plan));
    auto links = linksToApplications(targets, ports_.files, user_);
    auto report =
        ports_.executor.execute(plan, *layout, apps, choice.mode(), date, control, emptyResets(choice));
    if (!report) return report;
    if (manifestEntries(plan).empty() || report->hasBegunNothing()) dropRecord(*report);
    report->verification = verifyRemoval(taken, ports_.audit);
    const auto moved = movedBytes(*report, ports_.files);
    if (moved.isKnown) report->reclaimedBytes = moved.bytes;
    report->isReclaimedPartial = moved.isPartial;
    report->emptiedFolders = emptiedFolders(targets, ports_.files, user_);
    std::erase_if(links, [&](const Path& link) { return ports_.files.resolve(link).has_value(); });
    report->deadLinks = std::move(links);
    report->skippedNames = choice.findings().skippedNames();
    report->unseen = choice.findings().unseen();
    report->left = remaindersOf(choice, *report);
    return report;
}

/// A run that cannot be undone needs no folder afterwards, and no entry in the history.
void RemovalRun::dropRecord(RemovalReport& report) const {
    if (report.manifestFailure || !ports_.files.removeFile(report.manifestURL)) return;
    if (!ports_.files.removeEmptyDirectory(report.quarantineRoot)) return;
    report.quarantineRoot = report.manifestURL = Path();
}

namespace {

/// Traces whose step was not begun when the run was stopped.
std::set<Uuid> notBegun(const RemovalReport& report) {
    std::set<Uuid> traces;
    std::map<int, Uuid> traceOf;
    for (const auto& step : report.operations)
        traceOf.emplace(step.id, step.traceID);
    for (const auto& result : report.results)
        if (const auto trace = traceOf.find(result.operationID);
            wasNotBegun(result) && trace != traceOf.end())
            traces.insert(trace->second);
    return traces;
}

/// The packages whose receipts the run moved.
std::set<std::string> packagesForgotten(const RemovalReport& report) {
    std::map<int, std::string> packageOf;
    for (const auto& step : report.operations) {
        const auto* move = std::get_if<operation::Move>(&step.kind);
        if (move && move->source.parent().lastComponent() == "receipts")
            packageOf.emplace(step.id, move->source.stem());
    }
    std::set<std::string> forgotten;
    for (const auto& result : report.results)
        if (const auto package = packageOf.find(result.operationID);
            result.succeeded && package != packageOf.end())
            forgotten.insert(package->second);
    return forgotten;
}

/// The group's existing remainder, or a new one.
Remainder& remainderOf(const AppTarget& target, std::vector<Remainder>& left) {
    const auto known = std::ranges::find_if(left, [&](const Remainder& each) {
        return each.target.bundleURL == target.bundleURL && each.target.bundleID == target.bundleID
               && each.target.name == target.name;
    });
    if (known != left.end()) return *known;
    left.push_back({.target = target, .traces = {}});
    return left.back();
}

} // namespace

/// What stays after the run.
std::vector<Remainder> RemovalRun::remaindersOf(const RemovalChoice& choice,
                                                const RemovalReport& report) const {
    auto left = choice.remainders();
    const auto forgotten = packagesForgotten(report);
    for (auto& each : left)
        for (auto& item : each.traces)
            if (item.reason == StayReason::onlyListed && forgotten.contains(item.trace.reason.value))
                item.reason = StayReason::listGone;
    if (report.wasStopped()) {
        const auto stopped = notBegun(report);
        for (const auto& each : choice.going())
            for (const auto* trace : each.traces)
                if (stopped.contains(trace->id))
                    remainderOf(each.group->target, left).traces.push_back({*trace, StayReason::stopped});
    }
    return left;
}

} // namespace tidwen
