#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "cli/labels.h"

namespace tidwen {

namespace {

void print(const UndoReport& report, const CommandContext& context, const Mac& mac) {
    const bool isComplete = report.failures.empty();
    context.console.line(context.text(isComplete ? "report.undo.complete" : "report.undo.partial"),
                         isComplete ? Paint::good : Paint::caution);
    for (const auto& failure : report.failures)
        context.console.line("  " + failure);
    for (const auto& item : report.renamed)
        context.console.line("  " + context.text("cli.undo.renamed %@", {item.string()}));
    context.console.line(context.text("report.undo.restored %lld %lld", {std::to_string(report.restoredCount),
                                                                         std::to_string(report.totalCount)}));
    if (report.alreadyBack > 0)
        context.console.line(context.text("cli.undo.alreadyBack %lld", {std::to_string(report.alreadyBack)}));
    if (report.mayHaveLost) context.console.line(context.text("report.undo.permanent"), Paint::faint);
    // No job runs on a volume; it starts with the Mac that the volume belongs to.
    if (report.relaunchedJobs > 0 && !mac.volume)
        context.console.line(
            context.text("report.undo.relaunched %lld", {std::to_string(report.relaunchedJobs)}));
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    const std::string& word = context.arguments.operands.front();
    TerminalHistory history(mac);
    history.load(TerminalHistory::Sizes::leftOut);
    const auto root = history.find(word);
    if (!root) {
        mentionInterruptedRuns(context, history);
        return context.refuse(root.error());
    }
    context.console.progress(context.text("home.recovery.restoring"));
    const auto report = history.undo(*root);
    context.console.endProgress();
    if (!report) return context.refuse(report.error());
    if (context.arguments.json)
        context.console.document(json::document(*report));
    else
        print(*report, context, mac);
    return report->failures.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command undoCommand() {
    return {.syntax = {.name = "undo",
                       .summary = "Put everything that a removal moved back to its place",
                       .operandName = "RUN",
                       .operandHelp = "Number in history, or name of the quarantine folder",
                       .minimumOperands = 1,
                       .maximumOperands = 1},
            .run = run};
}

} // namespace tidwen
