#include "base/executor.h"
#include "base/message.h"
#include "base/path.h"
#include "base/text.h"
#include "base/texts.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/json/startup.h"
#include "cli/table.h"
#include "inventory/installed_applications.h"
#include "operations/permission_revoker.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "program/session.h"
#include "scan/applications/app_target.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/installed_bundles.h"
#include "scan/permissions/full_disk_access.h"
#include "scan/permissions/permission_audit.h"
#include "system/permissions_model.h"
#include "system/permissions_sheet.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

bool hasPermissions(const std::string& bundleID, const CommandContext& context, const Mac& mac) {
    const auto& system = mac.system;
    return !bundleID.empty()
           && !PermissionAudit(system.files, system.user, context.texts)
                   .audit(bundleID, Path())
                   .grants.empty();
}

std::optional<AppTarget> findTarget(const CommandContext& context, Mac& mac, const std::string& word) {
    const auto& system = mac.system;
    const auto installed = readIdentities(system.files, findApplicationBundles(system.files, system.user));
    const ApplicationFinder finder(system.files, installed, HostPaths(mac.volume));
    // Inspecting permissions changes nothing, so protected applications are accepted.
    const auto path = finder.find(word);
    // macOS keeps the permissions of removed applications. Their identifiers may have any form.
    const bool isAbsent = !path && path.error().key != "cli.app.ambiguous %@";
    const bool isKept = isAbsent && hasPermissions(word, context, mac);
    if (isAbsent && (isKept || isIdentifier(word))) {
        context.error({isKept ? "cli.permissions.absent %@" : "cli.permissions.absent.none %@", {word}});
        AppTarget gone;
        gone.bundleID = word;
        gone.name = word;
        return gone;
    }
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

void printUnreadable(const PermissionAudit::Result& audit, const CommandContext& context, const Mac& mac) {
    for (const auto scope : audit.unreadable)
        context.console.line(context.text("cli.permissions.database %@",
                                          {PermissionAudit::databasePath(scope, mac.system.user).string()}),
                             Style::caution);
}

ExitStatus statusOf(const PermissionAudit::Result& audit) {
    return audit.unreadable.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

void print(const AppTarget& app, const PermissionAudit::Result& audit, const CommandContext& context,
           const Mac& mac) {
    context.console.line(context.text("permissions.sheet.title %@", {app.name}), Style::strong);
    if (audit.grants.empty() && audit.unreadable.empty())
        context.console.line(context.text("permissions.sheet.none"));
    Table table;
    for (const auto& grant : audit.grants)
        table.add({{permissionTitle(grant.service, context.texts), Style::strong},
                   {context.text("cli.permission." + std::string(name(grant.state.kind)))},
                   {context.text("cli.permission.scope." + std::string(name(grant.scope))), Style::faint},
                   {grant.isPathClient ? context.text("permissions.sheet.pathClient") : "", Style::faint}});
    table.print(context.console);
    if (audit.unreadable.empty()) return;
    // A volume has no System Settings to grant access in.
    if (mac.volume) return printUnreadable(audit, context, mac);
    // If this program has Full Disk Access, the database itself is unreadable.
    const auto access = FullDiskAccessProbe::status(mac.system.files, mac.system.user);
    context.console.line(context.text(access == FullDiskAccessProbe::Status::denied
                                          ? "review.audit.unreadable"
                                          : "permissions.sheet.systemSettings"),
                         Style::caution);
}

/// Whether this program has Full Disk Access, on which the completeness of a scan depends.
ExitStatus showOwn(const CommandContext& context, Mac& mac) {
    MainQueue main;
    Session session(mac, main, InstalledBundles::Looks::once);
    auto& model = session.models().permissions();
    bool isRefreshed = false;
    model.refresh([&] { isRefreshed = true; });
    main.runUntil([&] { return isRefreshed; });
    const auto databases =
        PermissionAudit(mac.system.files, mac.system.user, context.texts).audit("", Path());
    if (context.arguments.json) {
        context.console.document(json::document(model));
        return statusOf(databases);
    }
    // A file that can be opened but is no database does not show that access was granted.
    const auto status = databases.unreadable.empty() ? model.fullDiskAccess.get()
                                                     : FullDiskAccessProbe::Status::indeterminate;
    const std::string access(name(status));
    context.console.line(context.text("permission.fullDisk") + ": " + context.text("cli.fullDisk." + access));
    printUnreadable(databases, context, mac);
    return statusOf(databases);
}

/// The grants named by the words: a service, with or without its prefix, or a title, ignoring case. All
/// without words.
tl::expected<std::vector<PermissionGrant>, Message> choose(const std::vector<PermissionGrant>& grants,
                                                           const std::vector<std::string>& words,
                                                           const Texts& texts) {
    if (words.empty()) return grants;
    std::vector<PermissionGrant> chosen;
    for (const auto& word : words) {
        const auto before = chosen.size();
        const auto wanted = lowercased(word);
        std::copy_if(grants.begin(), grants.end(), std::back_inserter(chosen),
                     [&](const PermissionGrant& grant) {
                         return lowercased(grant.service) == wanted
                                || lowercased(shortServiceName(grant.service)) == wanted
                                || lowercased(permissionTitle(grant.service, texts)) == wanted;
                     });
        if (chosen.size() == before) return tl::unexpected(Message{"cli.permissions.unknown %@", {word}});
    }
    return chosen;
}

/// Runs one permissions sheet through each of its steps.
class SheetSession {
  public:
    SheetSession(const CommandContext& context, Mac& mac, AppTarget target)
        : context_(context),
          mac_(mac),
          session_(mac, main_, InstalledBundles::Looks::once),
          sheet_(session_.models().permissionsSheet(std::move(target))) {
        wait([this](auto done) { sheet_->load(done); });
    }

    ExitStatus show() const {
        if (context_.arguments.json)
            context_.console.document(json::document(*sheet_->audit.get()));
        else
            print(sheet_->app(), *sheet_->audit.get(), context_, mac_);
        return statusOf(*sheet_->audit.get());
    }

    /// `words`: services; empty for all.
    ExitStatus revoke(const std::vector<std::string>& words) {
        if (const auto closed = whyNothingMoves(mac_.system.user, mac_.system.files))
            return context_.refuse(*closed);
        const auto chosen = choose(sheet_->audit.get()->grants, words, context_.texts);
        if (!chosen) return context_.refuse(chosen.error());
        auto status = ExitStatus::done;
        if (chosen->empty() && !sheet_->audit.get()->unreadable.empty()) {
            context_.console.error(context_.text("cli.permissions.unreadable"));
            status = ExitStatus::someFailed;
        } else if (chosen->empty()) {
            if (!context_.arguments.json) context_.console.line(context_.text("cli.permissions.nothing"));
        } else if (!agreed(context_, question(*chosen), "cli.permissions.needsYes")) {
            return ExitStatus::refused;
        }
        for (const auto& grant : *chosen)
            if (!revoke(grant)) status = ExitStatus::someFailed;
        const auto shown = show();
        return status == ExitStatus::done ? shown : status;
    }

  private:
    /// A reset cannot be undone, so each permission is listed.
    std::string question(const std::vector<PermissionGrant>& grants) const {
        std::string titles;
        for (const auto& grant : grants)
            titles += (titles.empty() ? "" : ", ") + permissionTitle(grant.service, context_.texts);
        return context_.text("cli.permissions.question %@ %@", {sheet_->app().name, titles});
    }

    bool revoke(const PermissionGrant& grant) {
        const auto title = permissionTitle(grant.service, context_.texts);
        sheet_->errorText.set(std::nullopt);
        wait([&](auto done) { sheet_->revoke(grant, done); });
        if (const auto& error = sheet_->errorText.get()) {
            context_.console.error(title + ": " + context_.texts.text(*error));
            return false;
        }
        const auto& left = sheet_->audit.get()->grants;
        const auto rest = std::find_if(left.begin(), left.end(), [&](const PermissionGrant& each) {
            return each.service == grant.service && each.scope == grant.scope;
        });
        if (rest == left.end()) return true;
        // A grant to a program by path is not reset through the application's identifier. Otherwise the user
        // dismissed the prompt, which needs no message.
        if (rest->isPathClient) {
            context_.error({"report.verify.tccSurvivor %@ %@", {sheet_->app().name, title}});
            context_.error({"report.verify.pathGrant"});
        }
        return false;
    }

    template<class Step>
    void wait(const Step& step) {
        bool isDone = false;
        step([&isDone] { isDone = true; });
        main_.runUntil([&isDone] { return isDone; });
    }

    const CommandContext& context_;
    Mac& mac_;
    MainQueue main_;
    Session session_;
    std::unique_ptr<PermissionsSheet> sheet_;
};

ExitStatus runPermissions(const CommandContext& context, Mac& mac) {
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "show" : words.front();
    if (action != "show" && action != "revoke") return context.misuseOfAction(action);
    if (action == "show" && words.size() < 2) return showOwn(context, mac);
    if (words.size() < 2 || (action == "show" && words.size() > 2)) return context.misuseOfAction(action);
    auto target = findTarget(context, mac, words[1]);
    if (!target) return ExitStatus::refused;
    SheetSession session(context, mac, std::move(*target));
    return action == "show" ? session.show() : session.revoke({words.begin() + 2, words.end()});
}

} // namespace

Command permissionsCommand() {
    return {.syntax = {.name = "permissions",
                       .summary = "cli.help.permissions",
                       .operandName = "ACTION",
                       .maximumOperands = anyNumber,
                       .actions = {{"show [APP]", "cli.help.permissions.show"},
                                   {"revoke APP [SERVICE...]", "cli.help.permissions.revoke"}}},
            .run = runPermissions};
}

} // namespace tidwen
