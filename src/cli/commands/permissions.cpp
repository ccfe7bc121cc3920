#include "cli/commands/scan_applications.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/json_startup.h"
#include "cli/table.h"
#include "inventory/installed_applications.h"

#include <algorithm>

namespace tidwen {

namespace {

std::optional<AppTarget> findTarget(const CommandContext& context, Mac& mac, const std::string& word) {
    const auto& system = mac.system;
    const auto installed = readIdentities(system.files, findApplicationBundles(system.files, system.user));
    const ApplicationFinder finder(system.files, installed, HostPaths(mac.volume));
    // Looking at permissions touches nothing, so protected applications are not refused here.
    const auto path = finder.find(word);
    if (!path) {
        context.refuse(path.error());
        return std::nullopt;
    }
    auto target = AppTargetLoader(system.files, system.signatures).load(*path);
    if (!target) {
        context.refuse({std::string(errorKey(target.error()))});
        return std::nullopt;
    }
    return std::move(*target);
}

/// What stands behind a permission: that it is limited, and whose it is.
std::string detail(const PermissionGrant& grant, const CommandContext& context) {
    std::string text;
    const auto add = [&](const char* key) { text += (text.empty() ? "" : " · ") + context.text(key); };
    if (grant.state.kind == PermissionGrant::State::Kind::limited) add("permissions.sheet.limited");
    if (grant.isPathClient)
        add("permissions.sheet.pathClient");
    else if (grant.scope == PermissionGrant::Scope::system)
        add("permissions.sheet.system");
    return text;
}

void print(const PermissionAudit::Result& audit, const CommandContext& context) {
    if (audit.grants.empty()) context.console.line(context.text("permissions.sheet.none"));
    Table table;
    for (const auto& grant : audit.grants)
        table.add({{permissionTitle(grant.service, context.texts), Paint::strong},
                   {context.text("cli.permission." + std::string(name(grant.state.kind)))},
                   {grant.service, Paint::faint},
                   {detail(grant, context), Paint::faint}});
    table.print(context.console);
    if (!audit.unreadable.empty())
        context.console.line(context.text("review.audit.unreadable"), Paint::caution);
}

/// The grants that the words name: by service, with or without its prefix, or by title. All without words.
tl::expected<std::vector<PermissionGrant>, Message> choose(const std::vector<PermissionGrant>& grants,
                                                           const std::vector<std::string>& words,
                                                           const Texts& texts) {
    if (words.empty()) return grants;
    std::vector<PermissionGrant> chosen;
    for (const auto& word : words) {
        const auto before = chosen.size();
        std::copy_if(grants.begin(), grants.end(), std::back_inserter(chosen),
                     [&](const PermissionGrant& grant) {
                         return grant.service == word || shortServiceName(grant.service) == word
                                || permissionTitle(grant.service, texts) == word;
                     });
        if (chosen.size() == before) return tl::unexpected(Message{"cli.permissions.unknown %@", {word}});
    }
    return chosen;
}

ExitStatus revoke(const CommandContext& context, Mac& mac, const AppTarget& target,
                  const PermissionAudit& audit) {
    const auto& words = context.arguments.operands;
    const auto chosen = choose(audit.audit(target).grants, {words.begin() + 2, words.end()}, context.texts);
    if (!chosen) return context.refuse(chosen.error());
    auto status = ExitStatus::done;
    for (const auto& grant : *chosen) {
        const auto outcome = mac.permissionRevoker.revoke(grant, target.bundleID);
        if (outcome) continue;
        status = ExitStatus::someFailed;
        if (const auto reason = outcome.error().describe())
            context.console.complain(permissionTitle(grant.service, context.texts) + ": "
                                     + context.texts.text(*reason));
    }
    return status;
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    const auto& words = context.arguments.operands;
    const auto& action = words.front();
    if (action != "show" && action != "revoke") return context.refuse({"cli.action.unknown %@", {action}});
    if (words.size() < 2 || (action == "show" && words.size() > 2))
        return context.refuse({"cli.action.needsOperand %@", {action}});
    const auto target = findTarget(context, mac, words[1]);
    if (!target) return ExitStatus::refused;
    const PermissionAudit audit(mac.system.files, mac.system.user, mac.system.texts);
    const auto status = action == "revoke" ? revoke(context, mac, *target, audit) : ExitStatus::done;
    if (status == ExitStatus::refused) return status;
    const auto result = audit.audit(*target);
    if (context.arguments.json)
        context.console.document(json::document(result));
    else
        print(result, context);
    return status;
}

} // namespace

Command permissionsCommand() {
    return {.syntax = {.name = "permissions",
                       .summary = "Privacy permissions of an application: show APP, revoke APP [SERVICE]",
                       .operandName = "ACTION",
                       .operandHelp = "show APP, revoke APP [SERVICE…]",
                       .minimumOperands = 1,
                       .maximumOperands = anyNumber,
                       .actions = {"show", "revoke"}},
            .run = run};
}

} // namespace tidwen
