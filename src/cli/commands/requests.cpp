#include "base/json.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "scan/request_inbox.h"

#include <nlohmann/json.hpp>

namespace tidwen {

namespace {

/// Requests that other processes left, each path judged as if it had been typed.
ExitStatus run(const CommandContext& context, Mac& mac) {
    if (context.arguments.operands.front() != "drain")
        return context.refuse({"cli.action.unknown %@", {context.arguments.operands.front()}});
    auto& system = mac.system;
    RequestInbox inbox(system.files, RequestInbox::fallbackContainer(system.user), system.log);
    std::vector<std::string> words;
    for (const auto& path : inbox.drain())
        words.push_back(path.string());

    const std::vector<InstalledIdentity> none; // requests name paths, never names
    const ApplicationFinder finder(system.files, none, HostPaths(mac.volume));
    const auto intake = loadTargets(words, finder, AppTargetLoader(system.files, system.signatures),
                                    ProtectedApps(system.defaults), context.texts);
    for (const auto& failure : intake.failures)
        context.console.complain(failure);
    if (context.arguments.json) {
        auto paths = nlohmann::json::array();
        for (const auto& target : intake.targets)
            paths.push_back(target.bundleURL.string());
        context.console.document(writeJson({{"paths", paths}}));
    } else {
        if (words.empty()) context.console.line(context.text("cli.requests.none"));
        for (const auto& target : intake.targets)
            context.console.line(
                {{target.name, Paint::strong}, {"  " + target.bundleURL.string(), Paint::faint}});
    }
    return intake.failures.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command requestsCommand() {
    return {.syntax = {.name = "requests",
                       .summary = "Applications that other processes asked to remove: drain",
                       .operandName = "ACTION",
                       .operandHelp = "drain: take the waiting requests and list what they name",
                       .minimumOperands = 1,
                       .maximumOperands = 1,
                       .actions = {"drain"}},
            .run = run};
}

} // namespace tidwen
