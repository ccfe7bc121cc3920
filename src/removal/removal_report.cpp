#include "removal/removal_report.h"

#include "base/message.h"
#include "operations/removal_operation.h"
#include "operations/stepwise_run.h"
#include "removal/stay_reason.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <unordered_map>
#include <variant>

namespace tidwen {

namespace {

bool resetsPermissions(const std::vector<RemovalOperation>& steps, const std::string& bundleID) {
    return std::ranges::any_of(steps, [&](const RemovalOperation& step) {
        return step.bundleID == bundleID && std::holds_alternative<operation::ResetPermissions>(step.kind);
    });
}

} // namespace

bool RemovalReport::keepsItsPermissions(const std::string& bundleID) const {
    const auto isOfOneThatStays = [](const Trace& trace) {
        return trace.category == TraceCategory::application
               || (trace.contestedBy && std::holds_alternative<action::ResetPermissions>(trace.action));
    };
    const auto stays = [&](const Remainder& each) {
        return each.target.bundleID == bundleID
               && std::ranges::any_of(each.traces, isOfOneThatStays, &StayingTrace::trace);
    };
    return !resetsPermissions(operations, bundleID)
           && (mode == RemovalMode::reset || std::ranges::any_of(left, stays));
}

bool RemovalReport::missedAPermission() const {
    return verification && std::ranges::any_of(verification->apps, [&](const auto& app) {
               return resetsPermissions(operations, app.bundleID)
                      && (!app.tccSurvivors.empty() || !app.unreadable.empty());
           });
}

bool RemovalReport::wasStopped() const {
    return std::ranges::any_of(results, wasNotBegun);
}

bool RemovalReport::isUntouched() const {
    return wasStopped() && std::ranges::all_of(results, wasNotBegun);
}

bool RemovalReport::hasBegunNothing() const {
    const auto refused = std::ranges::count_if(
        operations, [](const RemovalOperation& step) { return step.refusal.has_value(); });
    const auto stopped = std::ranges::count_if(results, wasNotBegun);
    return static_cast<std::size_t>(refused + stopped) == operations.size();
}

std::vector<RemovalReport::Failure> RemovalReport::failures() const {
    std::unordered_map<int, const OperationResult*> failed;
    for (const auto& result : results)
        if (!result.succeeded) failed.emplace(result.operationID, &result);
    std::vector<Failure> all;
    for (const auto& each : operations)
        if (const auto found = failed.find(each.id); found != failed.end())
            all.push_back({each, found->second->failureReason.value_or(Message{"failure.unknown"})});
    return all;
}

} // namespace tidwen
