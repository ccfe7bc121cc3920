#include "base/path.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/requested_applications.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/json/services.h"
#include "inventory/installed_applications.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "system/uninstall_service.h"

#include <string>
#include <vector>

namespace tidwen {

namespace {

ExitStatus drain(const CommandContext& context, Mac& mac) {
    auto inbox = requestInbox(context, mac);
    const auto drained = inbox.drain();
    const auto judged = judgeRequest(drained.paths, context, mac);
    if (context.arguments.json) {
        std::vector<Path> applications;
        applications.reserve(judged.targets.size());
        for (const auto& target : judged.targets)
            applications.push_back(target.bundleURL);
        context.console.document(json::requestsDocument(applications));
    } else {
        if (drained.isEmpty() && !drained.isClosed) context.console.line(context.text("cli.requests.none"));
        for (const auto& target : judged.targets)
            context.console.line(
                {{target.name, Style::strong}, {"  " + target.bundleURL.string(), Style::faint}});
    }
    reportRefused(drained, context);
    if (const auto folder = inbox.folder(); drained.isClosed && folder)
        context.error({"cli.unreadable %@", {folder->string()}});
    if (drained.waiting > 0)
        context.console.error(context.text("cli.requests.waiting %lld", {std::to_string(drained.waiting)}));
    const bool isAll = !judged.someRefused && drained.refused.empty() && drained.unreadable == 0;
    return isAll && drained.waiting == 0 && !drained.isClosed ? ExitStatus::done : ExitStatus::someFailed;
}

/// Posts like the Services menu item: a running `watch`, or the next `drain`, handles the request.
ExitStatus post(const std::vector<std::string>& words, const CommandContext& context, Mac& mac) {
    const auto& system = mac.system;
    const auto installed = readIdentities(system.files, findApplicationBundles(system.files, system.user));
    const ApplicationFinder finder(system.files, installed, HostPaths(mac.volume));
    const auto named = findBundles(words, finder);
    for (const auto& failure : named.failures)
        context.report(failure);
    const auto& selection = named.bundles;
    if (selection.empty()) return ExitStatus::refused;
    auto inbox = requestInbox(context, mac);
    switch (UninstallService(inbox, system.log).handOver(selection)) {
    case UninstallService::Outcome::handedOver:
        break;
    case UninstallService::Outcome::noApplication:
        return context.refuse({"error.notAnApplication"});
    case UninstallService::Outcome::notPosted:
        return context.refuse({"cli.requests.notPosted"});
    }
    if (context.arguments.json)
        context.console.document(json::requestsDocument(selection));
    else
        for (const auto& path : selection)
            context.console.line(context.text("cli.requests.posted %@", {path.string()}));
    return named.failures.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

ExitStatus runRequests(const CommandContext& context, Mac& mac) {
    const auto& words = context.arguments.operands;
    const auto& action = words.front();
    if (action == "drain" && words.size() == 1) return drain(context, mac);
    if (action == "post" && words.size() > 1) return post({words.begin() + 1, words.end()}, context, mac);
    if (action == "gate" && words.size() == 2 && (words[1] == "on" || words[1] == "off")) {
        const bool isOpen = words[1] == "on";
        if (!requestInbox(context, mac).setFinderGate(isOpen))
            return context.refuse({"cli.requests.gateFailed"});
        if (context.arguments.json)
            context.console.document(json::gateDocument(isOpen));
        else
            context.console.line(context.text(isOpen ? "cli.requests.gateOpen" : "cli.requests.gateClosed"));
        return ExitStatus::done;
    }
    return context.misuseOfAction(action);
}

} // namespace

Command requestsCommand() {
    return {.syntax = {.name = "requests",
                       .summary = "cli.help.requests",
                       .operandName = "ACTION",
                       .minimumOperands = 1,
                       .maximumOperands = anyNumber,
                       .actions = {{"drain", "cli.help.requests.drain"},
                                   {"post APP...", "cli.help.requests.post"},
                                   {"gate on|off", "cli.help.requests.gate"}}},
            .run = runRequests};
}

} // namespace tidwen
