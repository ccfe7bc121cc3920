#include "removal/removal_report.h"

#include <unordered_map>

namespace tidwen {

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
