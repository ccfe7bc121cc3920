#include "cli/commands/confirmed_removal.h"
#include "cli/console.h"
#include "cli/json_sweep.h"
#include "cli/labels.h"
#include "cli/selection.h"
#include "cli/table.h"

namespace tidwen {

namespace {

tl::expected<LeftoverFilter, Message> readFilter(const Arguments& arguments) {
    auto risks = parseTiers(arguments.values("--risk"));
    if (!risks) return tl::unexpected(std::move(risks.error()));
    return LeftoverFilter{.query = searchText(arguments), .risks = std::move(*risks)};
}

/// What passes, and of the applications those of which something does.
OrphanScanResult narrowed(OrphanScanResult orphans, const LeftoverFilter& filter) {
    for (auto& group : orphans.groups)
        std::erase_if(group.traces, [&](const Trace& trace) { return !filter.passes(trace); });
    std::erase_if(orphans.groups, [](const OrphanGroup& group) { return group.traces.empty(); });
    return orphans;
}

void print(const OrphanScanResult& orphans, bool isNarrowed, const CommandContext& context) {
    std::vector<Trace> all;
    for (const auto& group : orphans.groups) {
        context.console.line({{group.name, Paint::strong},
                              {"  " + group.bundleID},
                              {"  " + labels::countAndSize(group.traces, context.texts), Paint::faint}});
        Table table({Table::Align::left, Table::Align::right});
        for (const auto& trace : group.traces)
            table.add({labels::risk(trace.risk, context.texts),
                       {labels::size(trace.sizeBytes, context.texts)},
                       {trace.displayName}});
        table.print(context.console, 2);
        all.insert(all.end(), group.traces.begin(), group.traces.end());
    }
    for (const auto& location : orphans.unreadableLocations)
        context.console.line(context.text("cli.unreadable %@", {location.string()}), Paint::caution);
    context.console.line(all.empty()
                             ? context.text(isNarrowed ? "orphans.filter.empty.title" : "cli.orphans.none")
                             : context.text("cli.scan.found %@", {labels::countAndSize(all, context.texts)}));
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    const bool removes = context.arguments.has("--remove");
    if (const auto idle = idleOption(context.arguments, "--risk"); idle && !removes)
        return context.refuse(*idle);
    const auto filter = readFilter(context.arguments);
    if (!filter) return context.refuse(filter.error());
    FlowSession session(context, mac);
    if (!session.sweep()) return ExitStatus::refused;
    if (removes) return removeFound(context, mac, session, RemovalMode::uninstall);
    const auto& found = std::get<stage::Orphans>(session.model().stage()).result;
    const auto orphans = filter->isActive() ? narrowed(found, *filter) : found;
    if (context.arguments.json)
        context.console.document(json::document(orphans));
    else
        print(orphans, filter->isActive() && !found.groups.empty(), context);
    return ExitStatus::done;
}

std::vector<OptionSyntax> options() {
    auto all = removalOptions();
    all.insert(all.begin(), {"--remove", "", "Move what was found to quarantine"});
    all.insert(all.begin(), {filterOption, "TEXT", "Only what has TEXT in its path"});
    return all;
}

} // namespace

Command orphansCommand() {
    return {.syntax = {.name = "orphans",
                       .summary = "Find leftovers of applications that are no longer installed",
                       .options = options()},
            .run = run};
}

} // namespace tidwen
