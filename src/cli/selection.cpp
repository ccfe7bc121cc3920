#include "cli/selection.h"

#include "removal/chosen_items.h"
#include "scan/matching/default_selection.h"

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

/// Traces that the user named, found by one selector after the other.
class NamedTraces {
  public:
    NamedTraces(const std::vector<ScanResult>& results, RemovalMode mode, const HostPaths& hostPaths)
        : results_(results), mode_(mode), hostPaths_(hostPaths) {}

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

    std::set<Uuid> take() { return std::move(ids_); }

  private:
    std::vector<const Trace*> matching(const std::string& selector) const {
        for (const auto match : {&NamedTraces::items, &NamedTraces::ofApplication, &NamedTraces::lastNames})
            if (auto found = (this->*match)(selector); !found.empty()) return found;
        return {};
    }

    template<class Test>
    std::vector<const Trace*> where(const Test& isMeant) const {
        std::vector<const Trace*> found;
        for (const auto& result : results_)
            for (const auto& trace : result.traces)
                if (isMeant(result, trace)) found.push_back(&trace);
        return found;
    }

    /// What `remove` would take of it without further choice.
    std::vector<const Trace*> ofApplication(const std::string& name) const {
        return where([&](const ScanResult& result, const Trace& trace) {
            const auto& target = result.target;
            return !target.bundleID.empty() && (target.bundleID == name || target.name == name)
                   && takenByDefault(trace) && isEligible(trace, mode_);
        });
    }

    /// The end of a path, where only one item is called so.
    std::vector<const Trace*> lastNames(const std::string& name) const {
        auto found = where([&](const ScanResult&, const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return moved && moved->lastComponent() == name;
        });
        if (found.size() > 1) found.clear();
        return found;
    }

    std::vector<const Trace*> items(const std::string& selector) const {
        const Path path(selector);
        const auto onVolume = hostPaths_.macPath(selector);
        const auto id = Uuid::parse(selector);
        return where([&](const ScanResult&, const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return (id && trace.id == *id) || trace.displayName == selector
                   || (moved && (*moved == path || (onVolume && *moved == *onVolume)));
        });
    }

    std::optional<Message> take(const std::vector<const Trace*>& traces) {
        for (const auto* trace : traces) {
            if (trace->reversibility == Reversibility::manualOnly)
                return Message{"cli.select.byHandOnly %@", {trace->displayName}};
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

tl::expected<std::set<Uuid>, Message> chooseTraces(const std::vector<ScanResult>& found,
                                                   const SelectionRequest& request, RemovalMode mode,
                                                   const HostPaths& hostPaths) {
    NamedTraces named(found, mode, hostPaths);
    for (const auto& selector : request.selectors)
        if (auto refused = named.add(selector)) return tl::unexpected(std::move(*refused));
    auto ids = named.take();
    if (!request.tiers) return ids;
    for (const auto& result : found)
        for (const auto& trace : result.traces)
            if (request.tiers->contains(trace.risk) && isUndoubted(trace) && isEligible(trace, mode))
                ids.insert(trace.id);
    return ids;
}

} // namespace tidwen
