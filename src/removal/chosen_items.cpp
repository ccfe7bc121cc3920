#include "removal/chosen_items.h"

#include <algorithm>
#include <set>

namespace tidwen {

namespace {

/// True when one of `paths` is a folder that holds this one.
bool liesInOneOf(const std::set<Path>& paths, Path path) {
    while (!path.isRoot()) {
        path = path.parent();
        if (paths.contains(path)) return true;
    }
    return false;
}

std::set<Path> movedPaths(const std::vector<RemovalTarget>& targets) {
    std::set<Path> paths;
    for (const auto& target : targets)
        for (const auto& trace : target.traces)
            if (const Path* moved = movedPath(trace.action)) paths.insert(*moved);
    return paths;
}

} // namespace

bool isEligible(const Trace& trace, RemovalMode mode) {
    return trace.reversibility != Reversibility::manualOnly && !staysInMode(trace, mode);
}

bool takesTheApplication(const RemovalTarget& target) {
    return std::ranges::any_of(
        target.traces, [](const Trace& trace) { return trace.category == TraceCategory::application; });
}

void takeEachItemOnce(std::vector<RemovalTarget>& targets) {
    const auto all = movedPaths(targets);
    std::set<Path> seen;
    for (auto& target : targets)
        std::erase_if(target.traces, [&](const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return moved && (liesInOneOf(all, *moved) || !seen.insert(*moved).second);
        });
    std::erase_if(targets, [](const RemovalTarget& target) { return target.traces.empty(); });
}

std::vector<Trace> leftInPlace(const std::vector<ScanResult>& found, const std::vector<RemovalTarget>& chosen,
                               RemovalMode mode) {
    const auto moved = movedPaths(chosen);
    std::set<Uuid> ids;
    for (const auto& target : chosen)
        for (const auto& trace : target.traces)
            ids.insert(trace.id);

    std::vector<Trace> left;
    for (const auto& result : found)
        for (const auto& trace : result.traces) {
            const Path* path = movedPath(trace.action);
            const bool goesAlong = path && (moved.contains(*path) || liesInOneOf(moved, *path));
            if (!ids.contains(trace.id) && !goesAlong && !staysInMode(trace, mode)) left.push_back(trace);
        }
    return left;
}

} // namespace tidwen
