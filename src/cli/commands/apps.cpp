#include "base/byte_sum.h"
#include "base/executor.h"
#include "base/message.h"
#include "base/timestamp.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "inventory/home_grid.h"
#include "inventory/home_grid_model.h"
#include "platform/defaults.h"
#include "program/mac.h"
#include "program/session.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

/// The value given for `option`, refused unless it is valid for the setting `name`.
tl::expected<std::string, Message> choice(const Arguments& arguments, std::string_view option,
                                          std::string_view name, std::string fallback) {
    const auto given = arguments.values(option);
    if (given.empty()) return fallback;
    const auto word = given.back() == "used" ? "lastUsed" : given.back();
    for (const auto& setting : preferenceDescriptions()) {
        if (setting.name != name) continue;
        const auto& values = setting.values;
        if (std::find(values.begin(), values.end(), word) != values.end()) return word;
        std::string all;
        for (const auto value : values)
            all += (all.empty() ? "" : ", ")
                   + std::string(option == "--sort" && value == "lastUsed" ? "used" : value);
        return tl::unexpected(invalidValue(option, given.back(), all));
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
    // An application appears under each of its tags, but only once in a document.
    if (arguments.json) options.grouping = HomeGrouping::none;
    if (const auto texts = arguments.values("--filter"); !texts.empty()) options.query = texts.back();
    if (const auto tags = arguments.values("--tag"); !tags.empty()) options.tag = tags.back();
    return options;
}

/// Whether the output depends on the user's settings.
bool dependsOnSettings(const HomeGridOptions& options) {
    return options.onlyProtected || options.onlyUnused || options.tag
           || options.grouping != HomeGrouping::none;
}

/// The applications in order, without duplicates.
std::vector<const InstalledApp*> listed(const std::vector<HomeGroup>& groups) {
    std::vector<const InstalledApp*> apps;
    for (const auto& group : groups)
        for (const auto& app : group.apps)
            if (std::ranges::find(apps, app.get()) == apps.end()) apps.push_back(app.get());
    return apps;
}

/// The day, or that it is running; empty if unknown.
std::string lastUsed(const InstalledApp& app, const CommandContext& context) {
    if (app.usage && app.usage->isRunning) return context.text("cli.apps.running");
    if (!app.usage || !app.usage->evidence.date) return {};
    return displayDate(*app.usage->evidence.date).substr(0, std::string_view("2026-11-14").size());
}

/// Its tags and protection.
std::string decisions(const InstalledApp& app, const AppTags& tags, const ProtectedApps& protectedApps,
                      const CommandContext& context) {
    auto words = tags.tags(app.bundleID);
    if (protectedApps.contains(app.bundleID)) words.insert(words.begin(), context.text("cli.apps.protected"));
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

void print(const std::vector<HomeGroup>& groups, const AppTags& tags, const ProtectedApps& protectedApps,
           const CommandContext& context) {
    const auto heading = [&](const char* key) { return StyledText{context.text(key), Style::faint}; };
    using enum Table::Align;
    for (const auto& group : groups) {
        if (!group.title.empty())
            context.console.line(
                {{group.title, Style::strong},
                 {"  " + labels::countAndSize(group.apps.size(), group.size, context.texts), Style::faint}});
        Table table({left, left, right, left, left});
        table.add({heading("cli.apps.name"), heading("cli.apps.version"), heading("cli.apps.size"),
                   heading("cli.apps.lastUsed"), heading("cli.apps.identifier"), heading("cli.apps.path")});
        for (const auto& app : group.apps)
            table.add({{app->name, Style::strong},
                       {app->version.value_or("")},
                       {labels::size(*app, context.texts)},
                       {lastUsed(*app, context)},
                       {app->bundleID},
                       {app->url.string(), Style::faint},
                       {decisions(*app, tags, protectedApps, context), Style::caution}});
        table.print(context.console, group.title.empty() ? 0 : 2);
    }
    const auto apps = listed(groups);
    ByteSum sum;
    for (const auto* app : apps)
        sum.add(app->sizeBytes, app->isSizePartial);
    context.console.line(
        context.text("cli.apps.total %lld %@", {std::to_string(apps.size()), sizeText(sum, context.texts)}));
}

ExitStatus runApps(const CommandContext& context, Mac& mac) {
    auto& system = mac.system;
    const auto options = readOptions(context, system.defaults);
    if (!options) return context.misuse(options.error());
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
    const auto& tags = session.tags();
    const auto& protectedApps = session.protectedApps();
    HomeNames names;
    const auto groups =
        arrangeHomeGrid(apps, *options, tags, protectedApps, context.texts, system.clock.now(), names);
    if (context.arguments.json)
        context.console.document(json::document(listed(groups), tags, protectedApps));
    else if (groups.empty())
        context.console.line(context.text(apps.empty() ? "cli.apps.none" : "cli.apps.noMatch"));
    else
        print(groups, tags, protectedApps, context);
    const auto& inventory = grid.inventory.get();
    for (const auto& folder : inventory.unreadable)
        context.error({"cli.unreadable %@", {folder.string()}});
    const auto leftOut = inventory.leftOut;
    if (leftOut > 0) context.error({"cli.leftOut %lld", {std::to_string(leftOut)}});
    return leftOut > 0 || !inventory.unreadable.empty() ? ExitStatus::someFailed : ExitStatus::done;
}

} // namespace

Command appsCommand() {
    return {.syntax = {.name = "apps",
                       .summary = "cli.help.apps",
                       .options = {{"--group", "lastUsed|category|tag|none", "cli.help.apps.group"},
                                   {"--sort", "auto|name|size|used", "cli.help.apps.sort"},
                                   {"--filter", "TEXT", "cli.help.apps.filter"},
                                   {"--tag", "TAG", "cli.help.apps.tag"},
                                   {"--unused", "", "cli.help.apps.unused"},
                                   {"--protected", "", "cli.help.apps.protected"},
                                   {"--no-agents", "", "cli.help.apps.noAgents"}}},
            .run = runApps};
}

} // namespace tidwen
