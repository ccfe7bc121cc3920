#include "removal/protected_owners.h"

#include "base/text.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {
namespace {

/// `name` has the identifier, at its start or after a dot, and ends or goes on with a dot after it.
bool names(std::string_view name, std::string_view identifier) {
    for (auto at = name.find(identifier); at != std::string_view::npos; at = name.find(identifier, at + 1)) {
        const auto end = at + identifier.size();
        if ((at == 0 || name[at - 1] == '.') && (end == name.size() || name[end] == '.')) return true;
    }
    return false;
}

std::string nameOf(const Trace& trace) {
    const auto* path = movedPath(trace.action);
    return lowercased(path ? path->lastComponent() : trace.displayName);
}

} // namespace

void markProtectedOwners(ScanResult& result, const Protection& protection) {
    const auto own = lowercased(result.target.bundleID);
    std::vector<std::string> others;
    for (const auto& bundleID : protection.bundleIDs)
        if (auto identifier = lowercased(bundleID); !(own + ".").starts_with(identifier + "."))
            others.push_back(std::move(identifier));
    for (auto& trace : result.traces) {
        if (trace.category == TraceCategory::application) continue;
        for (const auto& identifier : others)
            if (names(nameOf(trace), identifier) || names(lowercased(trace.reason.value), identifier))
                trace.ownerUnsure = true;
    }
}

} // namespace tidwen
