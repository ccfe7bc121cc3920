#include "cli/commands/confirmed_removal.h"
#include "cli/console.h"
#include "cli/json_sweep.h"
#include "cli/labels.h"
#include "cli/table.h"

namespace tidwen {

namespace {

void print(const OrphanScanResult& orphans, const CommandContext& context) {
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
                             ? context.text("cli.orphans.none")
                             : context.text("cli.scan.found %@", {labels::countAndSize(all, context.texts)}));
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    const bool removes = context.arguments.has("--remove");
    if (const auto idle = idleOption(context.arguments); idle && !removes) return context.refuse(*idle);
    FlowSession session(context, mac);
    if (!session.sweep()) return ExitStatus::refused;
    if (removes) return removeFound(context, mac, session, RemovalMode::uninstall);
    const auto& orphans = std::get<stage::Orphans>(session.model().stage()).result;
    if (context.arguments.json)
        context.console.document(json::document(orphans));
    else
        print(orphans, context);
    return ExitStatus::done;
}

std::vector<OptionSyntax> options() {
    auto all = removalOptions();
    all.insert(all.begin(), {"--remove", "", "Move what was found to quarantine"});
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
