#include "base/executor.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "program/session.h"

#include <algorithm>

namespace tidwen {

namespace {

/// The raw value given for `option`, refused unless it is one of those that the setting `name` can have.
tl::expected<std::string, Message> choice(const Arguments& arguments, std::string_view option,
                                          std::string_view name, std::string fallback) {
    const auto given = arguments.values(option);
    if (given.empty()) return fallback;
    for (const auto& setting : preferenceDescriptions()) {
        if (setting.name != name) continue;
        const auto& values = setting.values;
        if (std::find(values.begin(), values.end(), given.back()) != values.end()) return given.back();
        std::string all;
        for (const auto value : values)
            all += (all.empty() ? "" : ", ") + std::string(value);
        return tl::unexpected(
            Message{"cli.apps.badValue %@ %@ %@", {std::string(option), given.back(), all}});
    }
    return fallback;
}

tl::expected<HomeGridOptions, Message> readOptions(const CommandContext& context, Defaults& defaults) {
    const auto& arguments = context.arguments;
    const auto grouping = choice(arguments, "--group", "homeGrouping", "none");
    if (!grouping) return tl::unexpected(grouping.error());
    const auto sort = choice(arguments, "--sort", "homeSort", arguments.has("--group") ? "auto" : "name");
    if (!sort) return tl::unexpected(sort.error());
    HomeGridOptions options{.grouping = homeGrouping(*grouping),
                            .sort = homeSort(*sort),
                            .threshold = unusedThreshold(AppPreferences(defaults).unusedThreshold.get()),
                            .showsBackgroundAgents = !arguments.has("--no-agents"),
                            .onlyUnused = arguments.has("--unused"),
                            .onlyProtected = arguments.has("--protected")};
    // An application stands under each of its tags; a document lists it once.
    if (arguments.json) options.grouping = HomeGrouping::none;
    if (const auto texts = arguments.values("--filter"); !texts.empty()) options.query = texts.back();
    if (const auto tags = arguments.values("--tag"); !tags.empty()) options.tag = tags.back();
    return options;
}

/// What is shown depends on what the user decided.
bool dependsOnSettings(const HomeGridOptions& options) {
    return options.onlyProtected || options.onlyUnused || options.tag
           || options.grouping != HomeGrouping::none;
}

std::string document(const std::vector<HomeGroup>& groups) {
    std::vector<InstalledApp> apps;
    for (const auto& group : groups)
        for (const auto* app : group.apps)
            apps.push_back(*app);
    return json::document(apps);
}

void print(const std::vector<HomeGroup>& groups, const CommandContext& context) {
    const auto heading = [&](const char* key) { return Span{context.text(key), Paint::faint}; };
    using enum Table::Align;
    for (const auto& group : groups) {
        if (!group.title.empty())
            context.console.line({{group.title, Paint::strong},
                                  {"  " + labels::size(group.bytes, context.texts), Paint::faint}});
        Table table({left, left, right, left, left});
        table.add({heading("cli.apps.name"), heading("cli.apps.version"), heading("cli.apps.size"),
                   heading("cli.apps.identifier"), heading("cli.apps.path")});
        for (const auto* app : group.apps)
            table.add({{app->name, Paint::strong},
                       {app->version.value_or("")},
                       {labels::size(app->sizeBytes, context.texts)},
                       {app->bundleID},
                       {app->url.string(), Paint::faint}});
        table.print(context.console, group.title.empty() ? 0 : 2);
    }
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    auto& system = mac.system;
    const auto options = readOptions(context, system.defaults);
    if (!options) return context.refuse(options.error());
    if (const auto problem = ProtectedApps(system.defaults).problem(); problem && dependsOnSettings(*options))
        return context.refuse(*problem);
    context.console.progress(context.text("cli.apps.progress"));
    MainQueue main;
    Session session(mac, main, InstalledBundles::Looks::once);
    auto& grid = session.models().homeGrid();
    grid.load();
    main.runUntil([&] { return grid.phase.get() == HomeGridModel::Phase::ready; });
    context.console.endProgress();
    const auto& apps = grid.apps();
    const auto groups = arrangeHomeGrid(apps, *options, session.tags(), session.protectedApps(),
                                        context.texts, system.clock.now());
    if (context.arguments.json)
        context.console.document(document(groups));
    else if (groups.empty())
        context.console.line(context.text(apps.empty() ? "cli.apps.none" : "cli.apps.noMatch"));
    else
        print(groups, context);
    const auto& inventory = grid.inventory.get();
    for (const auto& folder : inventory.unreadable)
        context.console.complain(context.text("cli.unreadable %@", {folder.string()}));
    const auto leftOut = inventory.leftOut;
    if (leftOut > 0) context.console.complain(context.text("cli.leftOut %lld", {std::to_string(leftOut)}));
    return leftOut > 0 || !inventory.unreadable.empty() ? ExitStatus::someFailed : ExitStatus::done;
}

} // namespace

Command appsCommand() {
    return {
        .syntax = {.name = "apps",
                   .summary = "List the applications that are installed",
                   .options = {{"--group", "lastUsed|category|tag|none", "Put them under headings"},
                               {"--sort", "auto|name|size|lastUsed", "Order, inside each group"},
                               {"--filter", "TEXT", "Those with TEXT in name, identifier or tags"},
                               {"--tag", "TAG", "Those with this tag"},
                               {"--unused", "", "Those not used for longer than the unusedThreshold setting"},
                               {"--protected", "", "Those that are protected from removal"},
                               {"--no-agents", "", "Without those that only work in the background"}}},
        .run = run};
}

} // namespace tidwen
