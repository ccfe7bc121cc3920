#include "removal/removal_report.h"

#include <algorithm>
#include <unordered_map>

namespace tidwen {

bool RemovalReport::keepsItsPermissions(const std::string& bundleID) const {
    const auto resets = [&](const RemovalOperation& step) {
        return step.bundleID == bundleID && std::holds_alternative<operation::ResetPermissions>(step.kind);
    };
    const auto stays = [&](const Remainder& each) {
        return each.target.bundleID == bundleID
               && std::ranges::any_of(each.traces, [](const StayingTrace& item) {
                      return item.trace.category == TraceCategory::application;
                  });
    };
    return std::ranges::none_of(operations, resets)
           && (mode == RemovalMode::reset || std::ranges::any_of(left, stays));
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
