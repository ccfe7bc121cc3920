#include "base/byte_sum.h"
#include "base/message.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/console.h"
#include "cli/flow_session.h"
#include "cli/incomplete_output.h"
#include "cli/json/sweep.h"
#include "cli/labels.h"
#include "cli/selection.h"
#include "cli/table.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"
#include "sweep/leftover_filter.h"
#include "sweep/orphan_scanner.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

tl::expected<LeftoverFilter, Message> readFilter(const CommandContext& context) {
    const auto& arguments = context.arguments;
    auto risks = parseTiers(arguments.values("--risk"), context.texts);
    if (!risks) return tl::unexpected(std::move(risks.error()));
    return LeftoverFilter{.query = searchText(arguments), .risks = std::move(*risks)};
}

/// Keeps the traces that match, and the groups that contain any.
void narrow(OrphanScanResult& orphans, const LeftoverFilter& filter) {
    for (auto& group : orphans.groups)
        std::erase_if(group.traces, [&](const Trace& trace) { return !filter.passes(trace); });
    std::erase_if(orphans.groups, [](const OrphanGroup& group) { return group.traces.empty(); });
}

/// What `--remove` takes with the same filter.
struct Removable {
    const LeftoverFilter& filter;
    bool isKnown; ///< the list of protected applications is readable

    bool contains(const Trace& trace) const {
        if (!isKnown || trace.reversibility == Reversibility::manualOnly) return false;
        return filter.risks.empty() ? takenByDefault(trace) : isUndoubted(trace);
    }

    std::string command(const CommandContext& context) const {
        std::vector<std::string> words = {"orphans", "--remove"};
        if (!filter.query.empty()) words.insert(words.end(), {filterOption, filter.query});
        std::string tiers;
        for (const auto risk : filter.risks)
            tiers += (tiers.empty() ? "" : ",") + std::string(name(risk));
        if (!tiers.empty()) words.insert(words.end(), {"--risk", tiers});
        return context.commandLine(words);
    }
};

/// The identifier by which it was found stands above the list already.
bool isNamedInHeading(const Trace& trace, const OrphanGroup& group) {
    return trace.reason.kind == MatchReason::Kind::exactBundleID && trace.reason.value == group.bundleID;
}

void printTraces(const OrphanGroup& group, const Removable& removable, const CommandContext& context) {
    // A group may be of any size; aligning columns over more rows is of no use.
    constexpr std::size_t rowsAtOnce = 5'000;
    for (std::size_t begin = 0; begin < group.traces.size(); begin += rowsAtOnce) {
        Table table({Table::Align::left, Table::Align::left, Table::Align::right});
        for (std::size_t i = begin; i < std::min(begin + rowsAtOnce, group.traces.size()); ++i) {
            const auto& trace = group.traces[i];
            table.add({{removable.contains(trace) ? "[x]" : "[ ]", Style::faint},
                       labels::risk(trace.risk, context.texts),
                       {labels::size(trace, context.texts)},
                       {trace.displayName},
                       {isNamedInHeading(trace, group) ? "" : labels::reason(trace.reason, context.texts),
                        Style::faint}});
        }
        table.print(context.console, 2);
    }
}

/// Why finds of the group are not selected, each reason once.
void printDoubts(const OrphanGroup& group, const CommandContext& context) {
    std::set<std::string> doubts;
    for (const auto& trace : group.traces)
        for (auto& doubt : labels::doubts(trace, context.texts))
            doubts.insert(std::move(doubt));
    for (const auto& doubt : doubts)
        context.console.line("  " + doubt, Style::caution);
}

void print(const OrphanScanResult& orphans, bool isNarrowed, const Removable& removable,
           const CommandContext& context) {
    std::size_t count = 0;
    bool isAnyMarked = false;
    ByteSum sum;
    for (const auto& group : orphans.groups) {
        context.console.line({{group.name, Style::strong},
                              {"  " + group.bundleID},
                              {"  " + labels::countAndSize(group.traces, context.texts), Style::faint}});
        printDoubts(group, context);
        printTraces(group, removable, context);
        isAnyMarked = isAnyMarked || std::ranges::any_of(group.traces, [&](const Trace& trace) {
                          return removable.contains(trace);
                      });
        count += group.traces.size();
        sum.add(group.bytes());
    }
    printUnreadable(orphans.unreadableLocations, context);
    for (const auto& gap : orphans.gaps)
        context.console.line(context.texts.text(gap.describe()), Style::caution);
    printIncomplete(orphans.leftOut, orphans.skippedNames, context);
    context.console.line(
        count == 0 ? context.text(isNarrowed             ? "orphans.filter.empty.title"
                                  : orphans.gaps.empty() ? "cli.orphans.none"
                                                         : "cli.orphans.undecided")
                   : context.text("cli.scan.found %@", {labels::countAndSize(count, sum, context.texts)}));
    if (isAnyMarked) context.offer("cli.orphans.remove %@", removable.command(context));
}

ExitStatus runOrphans(const CommandContext& context, Mac& mac) {
    const bool removes = context.arguments.has("--remove");
    if (const auto idle = idleOption(context.arguments, "--risk"); idle && !removes)
        return context.misuse(*idle);
    const auto filter = readFilter(context);
    if (!filter) return context.misuse(filter.error());
    FlowSession session(context, mac);
    if (removes) {
        if (!session.sweep()) return ExitStatus::refused;
        const auto& gaps = std::get<stage::Orphans>(session.model().stage()).result->gaps;
        const bool sawAllOwners = gaps.empty();
        for (const auto& gap : gaps)
            context.console.error(context.texts.text(gap.describe()));
        const auto status = removeFound(context, mac, session, RemovalMode::uninstall);
        return status == ExitStatus::done && !sawAllOwners ? ExitStatus::someFailed : status;
    }
    auto orphans = session.findOrphans();
    if (!orphans) return ExitStatus::refused;
    const auto unknown = ProtectedApps(mac.system.defaults).problem();
    if (unknown) context.refuse(*unknown);
    const bool isNarrowed = filter->isActive() && !orphans->groups.empty();
    const bool isComplete = orphans->isComplete();
    if (filter->isActive()) narrow(*orphans, *filter);
    if (context.arguments.json)
        json::write(*orphans, !unknown, context.texts,
                    [&](std::string_view piece) { context.console.document(piece); });
    else
        print(*orphans, isNarrowed, {*filter, !unknown}, context);
    if (unknown && !context.arguments.json) context.console.line(context.text("cli.scan.takenUnknown"));
    return isComplete && !unknown ? ExitStatus::done : ExitStatus::someFailed;
}

std::vector<OptionSyntax> options() {
    auto all = removalOptions();
    all.insert(all.begin(), {"--remove", "", "cli.help.orphans.remove"});
    all.insert(all.begin(), {filterOption, "TEXT", "cli.help.orphans.filter"});
    return all;
}

} // namespace

Command orphansCommand() {
    return {.syntax = {.name = "orphans", .summary = "cli.help.orphans", .options = options()},
            .run = runOrphans};
}

} // namespace tidwen
