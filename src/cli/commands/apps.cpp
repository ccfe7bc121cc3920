#include "base/parallel.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json_output.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "inventory/installed_applications.h"
#include "scan/residue_scanner.h"

namespace tidwen {

namespace {

void measure(std::vector<InstalledApp>& apps, const FileSystem& files) {
    parallelFor(apps.size(), [&](std::size_t index) {
        if (const auto size = files.treeSize(apps[index].url, traceSizeEntryLimit))
            apps[index].sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
    });
}

void print(const std::vector<InstalledApp>& apps, const CommandContext& context) {
    const auto heading = [&](const char* key) { return Span{context.text(key), Paint::faint}; };
    using enum Table::Align;
    Table table({left, left, right, left, left});
    table.add({heading("cli.apps.name"), heading("cli.apps.version"), heading("cli.apps.size"),
               heading("cli.apps.identifier"), heading("cli.apps.path")});
    for (const auto& app : apps)
        table.add({{app.name, Paint::strong},
                   {app.version.value_or("")},
                   {labels::size(app.sizeBytes, context.texts)},
                   {app.bundleID},
                   {app.url.string(), Paint::faint}});
    table.print(context.console);
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    context.console.progress(context.text("cli.apps.progress"));
    const auto& system = mac.system;
    auto apps =
        listInstalledApps(system.files, system.signatures, findApplicationBundles(system.files, system.user));
    measure(apps, system.files);
    if (context.arguments.json)
        context.console.document(json::document(apps));
    else if (apps.empty())
        context.console.line(context.text("cli.apps.none"));
    else
        print(apps, context);
    return ExitStatus::done;
}

} // namespace

Command appsCommand() {
    return {.syntax = {.name = "apps", .summary = "List the applications that are installed"}, .run = run};
}

} // namespace tidwen
