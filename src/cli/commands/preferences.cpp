// The commands for the user's settings: protect, tags, settings.

#include "base/message.h"
#include "base/text.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/json/settings.h"
#include "cli/suggestion.h"
#include "cli/table.h"
#include "inventory/installed_applications.h"
#include "platform/login_item.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "program/resources.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/other_applications.h"
#include "services/update_feed.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

ExitStatus wrongAction(const CommandContext& context) {
    return context.misuseOfAction(context.arguments.operands.front());
}

ExitStatus notStored(const CommandContext& context, const Host& host) {
    context.error(host.defaults.whyNotStored());
    return ExitStatus::someFailed;
}

/// Refuses with the word concerned.
ExitStatus refuse(const CommandContext& context, const std::string& word, const Message& reason) {
    context.console.error(word + ": " + context.texts.text(reason), reason.key);
    return ExitStatus::refused;
}

/// Says why a change that is asked for has no effect; that is no failure.
void tellIdle(const CommandContext& context, const Message& why) {
    if (!context.arguments.json) context.console.line(context.texts.text(why));
}

/// Resolves words on the command line to the identifiers used in settings.
class IdentifierReader {
  public:
    IdentifierReader(const CommandContext& context, Mac* mac) : context_(context), mac_(mac) {
        if (mac)
            installed_ = readIdentities(mac->system.files,
                                        findApplicationBundles(mac->system.files, mac->system.user));
    }

    /// nullopt, with the reason printed, if the word names no application and is no identifier. An identifier
    /// that is not installed is accepted with a note, so that it can be protected in advance.
    std::optional<std::string> read(const std::string& word) const {
        if (!mac_) {
            if (isIdentifier(word)) return word;
            context_.refuse({"cli.identifier.none %@", {word}});
            return std::nullopt;
        }
        const auto found = finder().findIdentifier(word);
        if (!found) {
            refuse(context_, word, found.error());
            return std::nullopt;
        }
        if (!found->isInstalled) context_.error({"cli.identifier.absent %@", {found->bundleID}});
        return found->bundleID;
    }

    /// The identifier of an installed application matched by something other than its identifier.
    std::optional<std::string> installed(const std::string& word) const {
        const auto found = mac_ ? finder().findIdentifier(word) : tl::unexpected(Message{});
        return found && found->isInstalled ? std::optional(found->bundleID) : std::nullopt;
    }

  private:
    ApplicationFinder finder() const { return {mac_->system.files, installed_, HostPaths(mac_->volume)}; }

    const CommandContext& context_;
    Mac* mac_;
    std::vector<InstalledIdentity> installed_;
};

/// The identifiers in the list that the words mean, by identifier (ignoring case) or by the application's
/// name; refused completely if one word is no identifier and names no application.
std::optional<std::set<std::string>> protectedOnes(const std::vector<std::string>& words,
                                                   const ProtectedApps& apps, const CommandContext& context,
                                                   Mac* mac) {
    const IdentifierReader reader(context, mac);
    std::set<std::string> found;
    for (const auto& word : words) {
        const Message unknown{"cli.protect.unknown %@", {word}};
        const auto id = apps.contains(word) ? std::optional(word) : reader.installed(word);
        if (!id && !isIdentifier(word)) {
            context.refuse(unknown);
            return std::nullopt;
        }
        if (id && apps.contains(*id))
            found.insert(*id);
        else
            tellIdle(context, unknown);
    }
    return found;
}

std::optional<std::set<std::string>> newOnes(const std::vector<std::string>& words, const ProtectedApps& apps,
                                             const CommandContext& context, Mac* mac) {
    const IdentifierReader reader(context, mac);
    std::set<std::string> found;
    for (const auto& word : words) {
        const auto id = reader.read(word);
        if (!id) return std::nullopt;
        if (apps.contains(*id))
            tellIdle(context, {"cli.protect.already %@", {word}});
        else
            found.insert(*id);
    }
    return found;
}

ExitStatus runProtect(const CommandContext& context, Host& host, Mac* mac) {
    ProtectedApps apps(host.defaults);
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    const bool changes = action == "add" || action == "remove";
    if (!changes && action != "list") return wrongAction(context);
    if (changes ? words.size() < 2 : words.size() > 1) return context.misuseOfAction(action);
    if (const auto problem = apps.problem()) return context.refuse(*problem);
    if (changes) {
        const std::vector<std::string> named(words.begin() + 1, words.end());
        const auto ids =
            action == "add" ? newOnes(named, apps, context, mac) : protectedOnes(named, apps, context, mac);
        if (!ids) return ExitStatus::refused;
        if (!ids->empty() && !apps.set({ids->begin(), ids->end()}, action == "add"))
            return notStored(context, host);
    }
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
        context.console.line(tag, Style::strong);
        for (const auto& id : ids)
            context.console.line("  " + id);
    }
}

/// The identifier that the word means; one with tags need not be installed.
std::optional<std::string> taggedOne(const std::string& word, const AppTags& tags,
                                     const CommandContext& context, Mac* mac) {
    return tags.tags(word).empty() ? IdentifierReader(context, mac).read(word) : std::optional(word);
}

/// `tag`: the tag to change; `name`: its new name, or the name of the new tag.
ExitStatus refuseTag(AppTags::Refusal refusal, const std::string& tag, const std::string& name,
                     const std::vector<std::string>& known, const CommandContext& context, const Host& host) {
    switch (refusal) {
    case AppTags::Refusal::unusableName:
        return context.refuse({"cli.tags.unusable %@", {name}});
    case AppTags::Refusal::thereAlready: // has no effect
    case AppTags::Refusal::notThere:
        return context.refuse({"cli.tags.notThere %@", {tag}}, closest(tag, known));
    case AppTags::Refusal::notStored:
        break;
    }
    return notStored(context, host);
}

/// Whether everything is already as the action would make it: the tag is given, or a tag that is in use is
/// not on this application. A tag that nothing carries is more likely mistyped.
bool hasNoEffect(AppTags::Refusal refusal, const std::string& action, const std::string& tag,
                 const AppTags& tags) {
    return refusal == AppTags::Refusal::thereAlready
           || (refusal == AppTags::Refusal::notThere && action == "remove" && !tags.tagged(tag).empty());
}

ExitStatus runTags(const CommandContext& context, Host& host, Mac* mac) {
    if (const auto problem = host.defaults.problem()) return context.refuse(*problem);
    AppTags tags(host.defaults, context.texts);
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    const auto needs = [&](std::size_t count) { return words.size() == count + 1; };
    AppTags::Result changed;
    const auto& tag = words.empty() ? action : words.back();
    if ((action == "add" || action == "remove") && needs(2)) {
        const auto id = action == "add" ? IdentifierReader(context, mac).read(words[1])
                                        : taggedOne(words[1], tags, context, mac);
        if (!id) return ExitStatus::refused;
        changed = action == "add" ? tags.add(*id, words[2]) : tags.remove(*id, words[2]);
    } else if (action == "rename" && needs(2))
        changed = tags.rename(words[1], words[2]);
    else if (action == "delete" && needs(1))
        changed = tags.erase(words[1]);
    else if (action != "list" || words.size() > 1)
        return context.misuseOfAction(action);
    if (!changed && hasNoEffect(changed.error(), action, tag, tags))
        tellIdle(context, {changed.error() == AppTags::Refusal::thereAlready ? "cli.tags.thereAlready %@"
                                                                             : "cli.tags.notTagged %@",
                           {tag}});
    else if (!changed)
        return refuseTag(changed.error(), action == "rename" ? words[1] : tag, tag, tags.all(), context,
                         host);
    if (context.arguments.json)
        context.console.document(json::document(byTag(tags)));
    else
        printTags(tags, context);
    return ExitStatus::done;
}

void printSettings(const AppPreferences& preferences, const CommandContext& context) {
    Table table;
    for (const auto& setting : preferenceDescriptions()) {
        std::string values;
        for (const auto& value : preferences.values(setting))
            values += (values.empty() ? "" : ", ") + value;
        table.add({{std::string(setting.name), Style::strong},
                   {*preferences.get(setting.name)},
                   {values, Style::faint}});
    }
    table.print(context.console);
}

/// Enables or disables the login item that watches the Trash of the given volume, else of this Mac.
ExitStatus watchAtLogin(bool isOn, const CommandContext& context, const Host& host) {
    if (isOn && !context.arguments.volume && !host.isMac) {
        context.error({"cli.settings.loginNeedsVolume"});
        return ExitStatus::done;
    }
    if (!host.loginItem.setEnabled(isOn)) {
        context.error({"cli.settings.loginFailed"});
        return ExitStatus::someFailed;
    }
    if (!isOn) return ExitStatus::done;
    if (host.loginItem.startsAnother())
        context.error({"cli.settings.loginByApplication"});
    else if (!context.arguments.json)
        context.offer("cli.settings.loginOn %@", context.commandLine({"watch"}));
    return ExitStatus::done;
}

ExitStatus refuseSetting(const std::string& name, const CommandContext& context) {
    std::vector<std::string> names;
    for (const auto& setting : preferenceDescriptions())
        names.emplace_back(setting.name);
    return context.refuse({"cli.settings.unknown %@", {name}}, closest(name, names));
}

std::vector<std::string> valuesOf(const std::string& name, const AppPreferences& preferences) {
    for (const auto& setting : preferenceDescriptions())
        if (setting.name == name) return preferences.values(setting);
    return {};
}

/// Confirms the new value, and says that something will be deleted without a question.
void confirm(const std::string& name, const std::string& value, const CommandContext& context) {
    context.console.line({{name, Style::strong}, {"  " + value}});
    if (name == "quarantineRetention" && value != "never")
        context.console.line(context.text("cli.settings.deletes"), Style::caution);
}

ExitStatus setSetting(AppPreferences& preferences, const CommandContext& context, Host& host) {
    const auto& words = context.arguments.operands;
    if (words.size() != 3) return context.misuseOfAction(words.front());
    if (!preferences.get(words[1])) return refuseSetting(words[1], context);
    if (words[1] == "updateFeed" && !words[2].empty() && !isPlainHttpsAddress(words[2]))
        return context.refuse({"updates.badAddress %@", {words[2]}});
    if (!preferences.set(words[1], words[2]))
        return context.misuse(
            invalidValue(words[1], words[2],
                         fmt::format("{}", fmt::join(valuesOf(words[1], preferences), ", "))),
            closest(words[2], valuesOf(words[1], preferences)));
    // Read what was stored, as another process would.
    const auto stored = AppPreferences(host.defaults).get(words[1]);
    if (stored != preferences.get(words[1])) return notStored(context, host);
    if (context.arguments.json)
        context.console.document(json::settingDocument(words[1], words[2]));
    else
        confirm(words[1], words[2], context);
    return words[1] == "catchTrashedApps" ? watchAtLogin(words[2] == "true", context, host)
                                          : ExitStatus::done;
}

ExitStatus runSettings(const CommandContext& context, Host& host) {
    if (const auto problem = host.defaults.problem()) return context.refuse(*problem);
    AppPreferences preferences(host.defaults,
                               availableLanguages(findResources(context.arguments.program.c_str())));
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    if (action == "set") return setSetting(preferences, context, host);
    if (action == "get" && words.size() == 2) {
        const auto value = preferences.get(words[1]);
        if (!value) return refuseSetting(words[1], context);
        if (context.arguments.json)
            context.console.document(json::settingDocument(words[1], *value));
        else
            context.console.line(*value);
        return ExitStatus::done;
    }
    if (action != "list" || words.size() > 1) return context.misuseOfAction(action);
    if (context.arguments.json)
        context.console.document(json::document(preferences));
    else
        printSettings(preferences, context);
    return ExitStatus::done;
}

} // namespace

Command protectCommand() {
    return {.syntax = {.name = "protect",
                       .summary = "cli.help.protect",
                       .operandName = "ACTION",
                       .maximumOperands = anyNumber,
                       .actions = {{"list", "cli.help.protect.list"},
                                   {"add APP...", "cli.help.protect.add"},
                                   {"remove APP...", "cli.help.protect.remove"}}},
            .run = runProtect};
}

Command tagsCommand() {
    return {.syntax = {.name = "tags",
                       .summary = "cli.help.tags",
                       .operandName = "ACTION",
                       .maximumOperands = 3,
                       .actions = {{"list", "cli.help.tags.list"},
                                   {"add APP TAG", "cli.help.tags.add"},
                                   {"remove APP TAG", "cli.help.tags.remove"},
                                   {"rename TAG NEW", "cli.help.tags.rename"},
                                   {"delete TAG", "cli.help.tags.delete"}}},
            .run = runTags};
}

Command settingsCommand() {
    return {.syntax = {.name = "settings",
                       .summary = "cli.help.settings",
                       .operandName = "ACTION",
                       .maximumOperands = 3,
                       .actions = {{"list", "cli.help.settings.list"},
                                   {"get NAME", "cli.help.settings.get"},
                                   {"set NAME VALUE", "cli.help.settings.set"}}},
            .run = runSettings};
}

} // namespace tidwen
