// The commands that read and change what the user decided: protect, tags, settings.

#include "cli/command.h"
#include "cli/console.h"
#include "cli/json_settings.h"
#include "cli/table.h"
#include "scan/protected_apps.h"
#include "services/update_feed.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <algorithm>
#include <map>

namespace tidwen {

namespace {

ExitStatus wrongAction(const CommandContext& context) {
    return context.refuse({"cli.action.unknown %@", {context.arguments.operands.front()}});
}

ExitStatus notStored(const CommandContext& context) {
    context.console.complain(context.text("cli.settings.notStored"));
    return ExitStatus::someFailed;
}

ExitStatus runProtect(const CommandContext& context, Host& host) {
    ProtectedApps apps(host.defaults);
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    const bool changes = action == "add" || action == "remove";
    if (!changes && action != "list") return wrongAction(context);
    if (changes ? words.size() < 2 : words.size() > 1)
        return context.refuse({"cli.action.wrongOperands %@ %@", {"protect", action}});
    if (changes)
        for (auto id = words.begin() + 1; id != words.end(); ++id)
            if (apps.contains(*id) != (action == "add") && !apps.toggle(*id)) return notStored(context);
    if (context.arguments.json)
        context.console.document(json::document(apps.bundleIDs()));
    else if (apps.bundleIDs().empty())
        context.console.line(context.text("cli.protect.none"));
    else
        for (const auto& id : apps.bundleIDs())
            context.console.line(id);
    return ExitStatus::done;
}

std::map<std::string, std::vector<std::string>> byTag(const AppTags& tags) {
    std::map<std::string, std::vector<std::string>> result;
    for (const auto& tag : tags.all())
        for (const auto& id : tags.tagged(tag))
            result[tag].push_back(id);
    return result;
}

void printTags(const AppTags& tags, const CommandContext& context) {
    if (tags.all().empty()) context.console.line(context.text("cli.tags.none"));
    for (const auto& [tag, ids] : byTag(tags)) {
        context.console.line(tag, Paint::strong);
        for (const auto& id : ids)
            context.console.line("  " + id);
    }
}

ExitStatus runTags(const CommandContext& context, Host& host) {
    AppTags tags(host.defaults);
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    const auto needs = [&](std::size_t count) { return words.size() == count + 1; };
    bool changed = true;
    if (action == "add" && needs(2))
        changed = tags.add(words[1], words[2]);
    else if (action == "remove" && needs(2))
        changed = tags.remove(words[1], words[2]);
    else if (action == "rename" && needs(2))
        changed = tags.rename(words[1], words[2]);
    else if (action == "delete" && needs(1))
        changed = tags.erase(words[1]);
    else if (action != "list" || words.size() > 1)
        return context.refuse({"cli.tags.usage"});
    if (!changed) context.console.complain(context.text("cli.tags.unchanged"));
    if (context.arguments.json)
        context.console.document(json::document(byTag(tags)));
    else
        printTags(tags, context);
    return changed ? ExitStatus::done : ExitStatus::someFailed;
}

void printSettings(const AppPreferences& preferences, const CommandContext& context) {
    Table table;
    for (const auto& setting : preferenceDescriptions()) {
        std::string values;
        for (const auto value : setting.values)
            values += (values.empty() ? "" : ", ") + std::string(value);
        table.add({{std::string(setting.name), Paint::strong},
                   {*preferences.get(setting.name)},
                   {values, Paint::faint}});
    }
    table.print(context.console);
}

/// Who wants the Trash watched has it watched from each login on, for the volume named now.
ExitStatus watchAtLogin(bool isOn, const CommandContext& context, LoginItem& loginItem) {
    if (isOn && !context.arguments.volume) {
        context.console.complain(context.text("cli.settings.loginNeedsVolume"));
        return ExitStatus::done;
    }
    if (!loginItem.setEnabled(isOn)) {
        context.console.complain(context.text("cli.settings.loginFailed"));
        return ExitStatus::someFailed;
    }
    if (isOn && !context.arguments.json)
        context.console.line(context.text("cli.settings.loginOn %@", {context.commandLine({"watch"})}));
    return ExitStatus::done;
}

ExitStatus setSetting(AppPreferences& preferences, const CommandContext& context, Host& host) {
    const auto& words = context.arguments.operands;
    if (words.size() != 3) return context.refuse({"cli.settings.usage"});
    if (!preferences.get(words[1])) return context.refuse({"cli.settings.unknown %@", {words[1]}});
    if (words[1] == "updateFeed" && !words[2].empty() && !isPlainHttpsAddress(words[2]))
        return context.refuse({"updates.badAddress %@", {words[2]}});
    if (!preferences.set(words[1], words[2]))
        return context.refuse({"cli.settings.refused %@ %@", {words[1], words[2]}});
    // Read back what another process would see.
    const auto stored = AppPreferences(host.defaults).get(words[1]);
    if (stored != preferences.get(words[1])) return notStored(context);
    return words[1] == "catchTrashedApps" ? watchAtLogin(words[2] == "true", context, host.loginItem)
                                          : ExitStatus::done;
}

ExitStatus runSettings(const CommandContext& context, Host& host) {
    AppPreferences preferences(host.defaults);
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    if (action == "set") return setSetting(preferences, context, host);
    if (action == "get" && words.size() == 2) {
        const auto value = preferences.get(words[1]);
        if (!value) return context.refuse({"cli.settings.unknown %@", {words[1]}});
        context.console.line(*value);
        return ExitStatus::done;
    }
    if (action != "list" || words.size() > 1) return context.refuse({"cli.settings.usage"});
    if (context.arguments.json)
        context.console.document(json::document(preferences));
    else
        printSettings(preferences, context);
    return ExitStatus::done;
}

} // namespace

Command protectCommand() {
    return {.syntax = {.name = "protect",
                       .summary = "Applications that must not be removed: list, add ID, remove ID",
                       .operandName = "ACTION",
                       .operandHelp = "list, add ID…, remove ID…",
                       .maximumOperands = anyNumber,
                       .actions = {"list", "add", "remove"}},
            .run = runProtect};
}

Command tagsCommand() {
    return {.syntax = {.name = "tags",
                       .summary = "Your own tags on applications: list, add, remove, rename, delete",
                       .operandName = "ACTION",
                       .operandHelp = "list, add ID TAG, remove ID TAG, rename TAG NEW, delete TAG",
                       .maximumOperands = 3,
                       .actions = {"list", "add", "remove", "rename", "delete"}},
            .run = runTags};
}

Command settingsCommand() {
    return {.syntax = {.name = "settings",
                       .summary = "Settings: list, get NAME, set NAME VALUE",
                       .operandName = "ACTION",
                       .operandHelp = "list, get NAME, set NAME VALUE",
                       .maximumOperands = 3,
                       .actions = {"list", "get", "set"}},
            .run = runSettings};
}

} // namespace tidwen
