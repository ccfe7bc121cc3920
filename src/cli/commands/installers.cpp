#include "base/executor.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/console.h"
#include "cli/flow_session.h"
#include "cli/incomplete_output.h"
#include "cli/json/sweep.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "program/session.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "sweep/installer_scanner.h"

#include <vector>

namespace tidwen {

namespace {

void printUnseen(const InstallerScanResult& result, const CommandContext& context) {
    if (result.unreadable) context.console.line(context.text("installers.unreadable.title"), Style::caution);
    printIncomplete(0, result.skippedNames, context);
}

void print(const InstallerScanResult& result, const CommandContext& context) {
    printUnseen(result, context);
    for (const bool matched : {true, false}) {
        Table table({Table::Align::right, Table::Align::left});
        for (const auto& file : result.files)
            if (file.installedApp.has_value() == matched)
                table.add({{labels::size(file, context.texts)},
                           {file.url.string(), Style::strong},
                           {matched ? context.text("installers.row.installed %@", {file.installedApp->name})
                                    : context.text("installers.row.unmatched"),
                            Style::faint}});
        if (table.empty()) continue;
        context.console.line(
            context.text(matched ? "installers.section.matched" : "installers.section.unmatched"),
            Style::strong);
        table.print(context.console, 2);
    }
    if (result.files.empty() && result.isComplete())
        context.console.line(context.text("installers.empty.title"));
}

/// By default only installers whose application is installed: they are no longer needed.
std::vector<Trace> traces(const InstallerScanResult& result, bool isChosen) {
    std::vector<Trace> traces;
    for (const auto& file : result.files)
        if (isChosen || file.installedApp) traces.push_back(installerTrace(file));
    return traces;
}

/// The completed result of the window's model.
InstallerScanResult findInstallers(Mac& mac) {
    MainQueue main;
    Session session(mac, main, InstalledBundles::Looks::once);
    auto& installers = session.models().installers();
    installers.load();
    main.runUntil([&] { return installers.hasLoaded.get(); });
    return installers.result.get();
}

ExitStatus runInstallers(const CommandContext& context, Mac& mac) {
    const bool removes = context.arguments.has("--remove");
    if (const auto idle = idleOption(context.arguments); idle && !removes) return context.misuse(*idle);
    const auto result = findInstallers(mac);
    if (removes) {
        if (result.unreadable) return context.refuse({"installers.unreadable.title"});
        for (const auto& file : result.skippedNames)
            context.error({"cli.skippedName %@", {file.string()}});
        FlowSession session(context, mac);
        session.model().show(stage::Installers{});
        session.model().offer(context.text("category.installers"),
                              traces(result, context.arguments.has("--select")));
        const auto status = removeFound(context, mac, session, RemovalMode::uninstall);
        return status == ExitStatus::done && !result.isComplete() ? ExitStatus::someFailed : status;
    }
    if (context.arguments.json)
        context.console.document(json::document(result, installersFolder(mac.system.user)));
    else
        print(result, context);
    return result.isComplete() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command installersCommand() {
    return {.syntax = {.name = "installers",
                       .summary = "cli.help.installers",
                       .options = {{"--remove", "", "cli.help.installers.remove"},
                                   {"--select", "ITEMS", "cli.help.installers.select"},
                                   {"--dry-run", "", "cli.help.option.dryRun"}}},
            .run = runInstallers};
}

} // namespace tidwen
