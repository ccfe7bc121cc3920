#include "cli/selection.h"

#include "scan/default_selection.h"

#include <algorithm>
#include <iterator>

namespace tidwen {

namespace {

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(',', begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
    }
    return parts;
}

bool canBeTaken(const Trace& trace) {
    return trace.reversibility != Reversibility::manualOnly;
}

/// Traces that the user named, found by one selector after the other.
class NamedTraces {
  public:
    NamedTraces(const std::vector<ScanResult>& results, const SelectionRequest& request,
                const HostPaths& hostPaths)
        : results_(results), mode_(request.mode), hostPaths_(hostPaths) {}

    /// Gives why a selector is refused.
    std::optional<Message> add(const std::string& selector) {
        if (const auto matches = matching(selector); !matches.empty()) return take(matches);
        // A path may hold commas; only what names nothing as a whole is a list.
        const auto parts = splitAtCommas(selector);
        for (const auto& part : parts) {
            const auto matches = parts.size() > 1 ? matching(part) : std::vector<const Trace*>{};
            if (matches.empty()) return Message{"cli.select.unknown %@", {part}};
            if (auto refused = take(matches)) return refused;
        }
        return std::nullopt;
    }

    bool contains(const Trace& trace) const { return ids_.contains(trace.id); }

  private:
    std::vector<const Trace*> matching(const std::string& selector) const {
        std::vector<const Trace*> found;
        const Path path(selector);
        const auto onVolume = hostPaths_.macPath(selector);
        const auto id = Uuid::parse(selector);
        for (const auto& result : results_)
            for (const auto& trace : result.traces) {
                const Path* moved = movedPath(trace.action);
                if ((id && trace.id == *id) || trace.displayName == selector
                    || (moved && (*moved == path || (onVolume && *moved == *onVolume))))
                    found.push_back(&trace);
            }
        return found;
    }

    std::optional<Message> take(const std::vector<const Trace*>& traces) {
        for (const auto* trace : traces) {
            if (!canBeTaken(*trace)) return Message{"cli.select.byHandOnly %@", {trace->displayName}};
            if (staysInMode(*trace, mode_))
                return Message{"cli.select.staysInReset %@", {trace->displayName}};
            ids_.insert(trace->id);
        }
        return std::nullopt;
    }

    const std::vector<ScanResult>& results_;
    RemovalMode mode_;
    const HostPaths& hostPaths_;
    std::set<Uuid> ids_;
};

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

/// Leaves out what goes anyway with a folder that is taken, and what an earlier application of the run takes:
/// the second move would fail, and undo would find the first one's place occupied.
void takeEachItemOnce(std::vector<RemovalTarget>& targets) {
    const auto all = movedPaths(targets);
    std::set<Path> seen;
    for (auto& target : targets)
        std::erase_if(target.traces, [&](const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return moved && (liesInOneOf(all, *moved) || !seen.insert(*moved).second);
        });
}

} // namespace

tl::expected<std::set<TraceRisk>, Message> parseTiers(const std::vector<std::string>& words) {
    std::set<TraceRisk> tiers;
    for (const auto& word : words)
        for (const auto& part : splitAtCommas(word)) {
            const auto risk = parseTraceRisk(part);
            if (!risk) return tl::unexpected(Message{"cli.risk.unknown %@", {part}});
            tiers.insert(*risk);
        }
    return tiers;
}

bool staysInMode(const Trace& trace, RemovalMode mode) {
    return mode == RemovalMode::reset
           && (trace.category == TraceCategory::application || trace.category == TraceCategory::receipts);
}

tl::expected<std::vector<RemovalTarget>, Message> chooseTraces(const std::vector<ScanResult>& results,
                                                               const SelectionRequest& request,
                                                               const HostPaths& hostPaths) {
    NamedTraces named(results, request, hostPaths);
    for (const auto& selector : request.selectors)
        if (auto refused = named.add(selector)) return tl::unexpected(std::move(*refused));

    const auto isChosen = [&](const Trace& trace) {
        if (!request.selectors.empty()) return named.contains(trace);
        if (staysInMode(trace, request.mode) || !canBeTaken(trace)) return false;
        if (request.tiers) return request.tiers->contains(trace.risk) && !trace.contestedBy;
        return takenByDefault(trace);
    };

    std::vector<RemovalTarget> targets;
    for (const auto& result : results) {
        RemovalTarget target{.target = result.target, .traces = {}};
        std::copy_if(result.traces.begin(), result.traces.end(), std::back_inserter(target.traces), isChosen);
        targets.push_back(std::move(target));
    }
    takeEachItemOnce(targets);
    std::erase_if(targets, [](const RemovalTarget& target) { return target.traces.empty(); });
    return targets;
}

std::vector<Trace> leftInPlace(const std::vector<ScanResult>& results,
                               const std::vector<RemovalTarget>& chosen, RemovalMode mode) {
    const auto moved = movedPaths(chosen);
    std::set<Uuid> ids;
    for (const auto& target : chosen)
        for (const auto& trace : target.traces)
            ids.insert(trace.id);

    std::vector<Trace> left;
    for (const auto& result : results)
        for (const auto& trace : result.traces) {
            const Path* path = movedPath(trace.action);
            const bool goesAlong = path && (moved.contains(*path) || liesInOneOf(moved, *path));
            if (!ids.contains(trace.id) && !goesAlong && !staysInMode(trace, mode)) left.push_back(trace);
        }
    return left;
}

} // namespace tidwen
