#include "cli/selection.h"

#include "base/path.h"
#include "base/path_key.h"
#include "base/text.h"
#include "base/uuid.h"
#include "removal/chosen_items.h"
#include "removal/removal_plan.h"
#include "scan/applications/app_target.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"

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

/// The traces selected by a sequence of selectors.
class NamedTraces {
  public:
    NamedTraces(const std::vector<FoundGroup>& groups, RemovalMode mode, const HostPaths& hostPaths,
                const Texts& texts, const std::string& listing)
        : groups_(groups), mode_(mode), hostPaths_(hostPaths), texts_(texts), listing_(listing) {}

    /// Returns why a selector is refused.
    std::optional<Message> add(const std::string& selector) {
        auto whole = resolve(selector);
        // A path may contain commas, so a selector is split only if it matches nothing as a whole.
        const auto parts = splitAtCommas(selector);
        if (whole || parts.size() == 1) return take(std::move(whole));
        for (const auto& part : parts)
            if (auto refused = take(resolve(part))) return refused;
        return std::nullopt;
    }

    Selection take() { return std::move(selection_); }

  private:
    using Traces = std::vector<const Trace*>;
    struct Meant {
        Traces traces;
        bool isOneItem = false; ///< rather than an application with its defaults
    };

    tl::expected<Meant, Message> resolve(const std::string& selector) const {
        if (auto found = atPath(selector); !found.empty()) return Meant{std::move(found), true};
        if (isApplication(selector)) {
            auto found = ofApplication(selector);
            if (found.empty()) return tl::unexpected(Message{"cli.select.nothingByDefault %@", {selector}});
            return Meant{std::move(found)};
        }
        for (auto found : {shownAs(selector), endingIn(selector)}) {
            if (found.empty()) continue;
            if (const auto items = placesOf(found); items.size() > 1)
                return tl::unexpected(Message{"cli.select.ambiguous %@ %@", {selector, joined(items)}});
            return Meant{std::move(found), true};
        }
        return tl::unexpected(Message{"cli.select.unknown %@ %@", {selector, listing_}});
    }

    template<class Test>
    Traces where(const Test& isMeant) const {
        Traces found;
        for (const auto& group : groups_)
            for (const auto& trace : group.traces)
                if (isMeant(group, trace)) found.push_back(&trace);
        return found;
    }

    /// Two targets that share an item each have a trace of it.
    static std::set<std::string> placesOf(const Traces& traces) {
        std::set<std::string> places;
        for (const auto* trace : traces) {
            const Path* moved = movedPath(trace->action);
            places.insert(moved ? moved->string() : trace->displayName);
        }
        return places;
    }

    static std::string joined(const std::set<std::string>& words) {
        std::string text;
        for (const auto& word : words)
            text += (text.empty() ? "" : ", ") + word;
        return text;
    }

    Traces atPath(const std::string& selector) const {
        const Path path(selector);
        const auto onVolume = hostPaths_.macPath(selector);
        const auto id = Uuid::parse(selector);
        const auto isExact = [&](const FoundGroup&, const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return (id && trace.id == *id)
                   || (moved && (*moved == path || (onVolume && *moved == *onVolume)));
        };
        auto found = where(isExact);
        if (!found.empty() || !path.isAbsolute()) return found;
        found = where([&](const FoundGroup&, const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            return moved && pathKey(*moved) == pathKey(path);
        });
        return placesOf(found).size() == 1 ? found : Traces();
    }

    static bool isCalled(const AppTarget& target, const std::string& name) {
        const auto key = fileNameKey(name);
        return !target.bundleID.empty()
               && (fileNameKey(target.bundleID) == key || fileNameKey(target.name) == key);
    }

    bool isApplication(const std::string& name) const {
        return std::ranges::any_of(groups_, [&](const auto& each) { return isCalled(each.target, name); });
    }

    /// The default selection of `remove`.
    Traces ofApplication(const std::string& name) const {
        return where([&](const FoundGroup& group, const Trace& trace) {
            return isCalled(group.target, name) && takenByDefault(trace) && isEligible(trace, mode_);
        });
    }

    Traces shownAs(const std::string& name) const {
        const auto key = fileNameKey(name);
        return where([&](const FoundGroup&, const Trace& trace) {
            return fileNameKey(trace.displayName) == key || fileNameKey(displayName(trace, texts_)) == key;
        });
    }

    /// Matches the last components of the path.
    Traces endingIn(const std::string& name) const {
        const auto wanted = Path("/" + name).standardized().components();
        if (wanted.size() < 2 || name.starts_with('/')) return {};
        return where([&](const FoundGroup&, const Trace& trace) {
            const Path* moved = movedPath(trace.action);
            const auto parts = moved ? moved->components() : std::vector<std::string>();
            return parts.size() >= wanted.size()
                   && std::equal(
                       wanted.rbegin(), std::prev(wanted.rend()), parts.rbegin(),
                       [](const auto& a, const auto& b) { return fileNameKey(a) == fileNameKey(b); });
        });
    }

    std::optional<Message> take(tl::expected<Meant, Message> meant) {
        if (!meant) return std::move(meant.error());
        for (const auto* trace : meant->traces) {
            if (trace->reversibility == Reversibility::manualOnly)
                return Message{"cli.select.byHandOnly %@", {displayName(*trace, texts_)}};
            if (staysInMode(*trace, mode_))
                return Message{"cli.select.staysInReset %@", {displayName(*trace, texts_)}};
            selection_.ids.push_back(trace->id);
            if (meant->isOneItem) selection_.named.push_back(trace->id);
        }
        return std::nullopt;
    }

    const std::vector<FoundGroup>& groups_;
    RemovalMode mode_;
    const HostPaths& hostPaths_;
    const Texts& texts_;
    const std::string& listing_;
    Selection selection_;
};

} // namespace

std::string searchText(const Arguments& arguments) {
    const auto texts = arguments.values(filterOption);
    return texts.empty() ? std::string() : texts.back();
}

tl::expected<std::set<TraceRisk>, Message> parseTiers(const std::vector<std::string>& words,
                                                      const Texts& texts) {
    const auto tierCalled = [&](const std::string& word) -> std::optional<TraceRisk> {
        const auto wanted = lowercased(trimmed(word));
        for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive})
            if (lowercased(texts.text("risk." + std::string(name(risk)) + ".title")) == wanted) return risk;
        return parseTraceRisk(wanted);
    };
    std::set<TraceRisk> tiers;
    for (const auto& word : words)
        for (const auto& part : splitAtCommas(word)) {
            const auto risk = tierCalled(part);
            if (!risk) return tl::unexpected(invalidValue("--risk", part, "safe, review, sensitive"));
            tiers.insert(*risk);
        }
    return tiers;
}

tl::expected<Selection, Message> chooseTraces(const std::vector<FoundGroup>& found,
                                              const SelectionRequest& request, RemovalMode mode,
                                              const HostPaths& hostPaths, const Texts& texts) {
    NamedTraces named(found, mode, hostPaths, texts, request.listing);
    for (const auto& selector : request.selectors)
        if (auto refused = named.add(selector)) return tl::unexpected(std::move(*refused));
    auto selection = named.take();
    if (!request.tiers) return selection;
    for (const auto& group : found)
        for (const auto& trace : group.traces)
            if (request.tiers->contains(trace.risk) && isUndoubted(trace) && isEligible(trace, mode))
                selection.ids.push_back(trace.id);
    return selection;
}

} // namespace tidwen
