#include "removal/chosen_items.h"

#include <algorithm>
#include <iterator>
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

std::vector<Remainder> remainders(const std::vector<ScanResult>& found,
                                  const std::vector<RemovalTarget>& chosen, RemovalMode mode) {
    const auto moved = movedPaths(chosen);
    std::set<Uuid> ids;
    for (const auto& target : chosen)
        for (const auto& trace : target.traces)
            ids.insert(trace.id);

    std::vector<Remainder> left;
    for (const auto& result : found) {
        const bool isGoing = std::ranges::any_of(chosen, [&](const RemovalTarget& target) {
            return target.target.bundleURL == result.target.bundleURL && takesTheApplication(target);
        });
        Remainder remainder{.target = result.target, .traces = {}};
        for (const auto& trace : result.traces) {
            const Path* path = movedPath(trace.action);
            const bool goesAlong = path && (moved.contains(*path) || liesInOneOf(moved, *path));
            const bool isIdle = std::holds_alternative<action::Guidance>(trace.action) && !isGoing;
            if (!ids.contains(trace.id) && !goesAlong && !staysInMode(trace, mode) && !isIdle)
                remainder.traces.push_back(trace);
        }
        if (!remainder.traces.empty()) left.push_back(std::move(remainder));
    }
    return left;
}

std::vector<Trace> leftInPlace(const std::vector<ScanResult>& found, const std::vector<RemovalTarget>& chosen,
                               RemovalMode mode) {
    std::vector<Trace> left;
    for (auto& each : remainders(found, chosen, mode))
        std::ranges::move(each.traces, std::back_inserter(left));
    return left;
}

} // namespace tidwen
