#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/flow_session.h"
#include "operations/removal_operation.h"
#include "program/mac.h"

#include <string_view>

namespace tidwen {

namespace {

ExitStatus runRemoval(const CommandContext& context, Mac& mac, RemovalMode mode) {
    FlowSession session(context, mac);
    // What is gone cannot be set back to its beginnings.
    const auto ofGone = mode == RemovalMode::reset ? GoneTargets::refused : GoneTargets::searched;
    if (!session.scan(context.arguments.operands, ProtectedTargets::refused, ofGone))
        return ExitStatus::refused;
    const auto status = removeFound(context, mac, session, mode);
    return status == ExitStatus::done && session.someRefused() ? ExitStatus::someFailed : status;
}

ExitStatus runUninstall(const CommandContext& context, Mac& mac) {
    return runRemoval(context, mac, RemovalMode::uninstall);
}
ExitStatus runReset(const CommandContext& context, Mac& mac) {
    return runRemoval(context, mac, RemovalMode::reset);
}

CommandSyntax syntax(std::string_view name, std::string_view summary) {
    return {.name = name,
            .summary = summary,
            .operandName = "APP",
            .operandHelp = "cli.help.operand.app",
            .minimumOperands = 1,
            .maximumOperands = anyNumber,
            .options = removalOptions()};
}

} // namespace

Command removeCommand() {
    return {.syntax = syntax("remove", "cli.help.remove"), .run = runUninstall};
}

Command resetCommand() {
    return {.syntax = syntax("reset", "cli.help.reset"), .run = runReset};
}

} // namespace tidwen
