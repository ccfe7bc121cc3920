#include "cli/commands/removal_output.h"

#include "cli/console.h"
#include "cli/labels.h"
#include "cli/table.h"

#include <algorithm>

namespace tidwen {

namespace {

std::string number(std::size_t count) {
    return std::to_string(count);
}

/// The part of a destination that tells more than the folder it lies in.
std::string belowRoot(const Path& path, const Path& root) {
    return path.isWithin(root) && path != root ? path.string().substr(root.string().size() + 1)
                                               : path.string();
}

void printDestructive(const std::vector<RemovalTarget>& targets, const CommandContext& context) {
    std::vector<std::string> names;
    for (const auto& target : targets)
        for (const auto& trace : target.traces)
            if (trace.reversibility == Reversibility::irreversibleDestructive)
                names.push_back(trace.displayName);
    if (names.empty()) return;
    context.console.line(context.text("confirm.permanent.heading %lld", {number(names.size())}),
                         Paint::danger);
    for (const auto& name : names)
        context.console.line("  " + name);
}

void printSurvivors(const VerificationReport& verification, const CommandContext& context) {
    bool isClean = true;
    for (const auto& app : verification.apps)
        for (const auto& grant : app.tccSurvivors) {
            isClean = false;
            context.console.line(context.text("report.verify.tccSurvivor %@ %@",
                                              {app.name, permissionTitle(grant.service, context.texts)}),
                                 Paint::caution);
        }
    if (isClean) context.console.line(context.text("report.verify.clean"));
}

} // namespace

void printSummary(const std::vector<RemovalTarget>& targets, const CommandContext& context) {
    std::int64_t bytes = 0;
    std::size_t count = 0;
    for (const auto& target : targets) {
        context.console.line(target.target.name, Paint::strong);
        Table table({Table::Align::left, Table::Align::right});
        for (const auto& trace : target.traces)
            table.add({labels::risk(trace.risk, context.texts),
                       {labels::size(trace.sizeBytes, context.texts)},
                       {labels::category(trace.category, context.texts), Paint::faint},
                       {trace.displayName}});
        table.print(context.console, 2);
        bytes += labels::totalBytes(target.traces);
        count += target.traces.size();
    }
    context.console.line(
        context.text("confirm.summary %lld %@", {number(count), labels::size(bytes, context.texts)}));
    printDestructive(targets, context);
}

void printLeft(const std::vector<Trace>& left, const CommandContext& context) {
    std::vector<Trace> takeable;
    for (const auto& trace : left) {
        if (const auto* guidance = std::get_if<action::Guidance>(&trace.action))
            context.console.line(guidance->step.instruction, Paint::caution);
        else
            takeable.push_back(trace);
    }
    if (!takeable.empty())
        context.console.line(
            context.text("cli.remove.left %@", {labels::countAndSize(takeable, context.texts)}),
            Paint::caution);
}

void printPlan(const std::vector<RemovalOperation>& plan, const QuarantineLayout& layout,
               const CommandContext& context) {
    context.console.line(context.text("cli.plan.heading %@", {layout.root.string()}));
    Table table({Table::Align::right});
    for (const auto& step : plan) {
        const auto* move = std::get_if<operation::Move>(&step.kind);
        table.add({{std::to_string(step.id)},
                   {step.requiresRoot ? context.text("cli.plan.administrator") : "", Paint::caution},
                   {labels::verb(step.kind, context.texts), Paint::faint},
                   {labels::subject(step)
                    + (move ? " -> " + belowRoot(move->destination, layout.root) : std::string())}});
    }
    table.print(context.console);
}

void printReport(const RemovalReport& report, const CommandContext& context) {
    Table table({Table::Align::right});
    for (const auto& step : report.operations) {
        const auto result = std::find_if(report.results.begin(), report.results.end(),
                                         [&](const OperationResult& r) { return r.operationID == step.id; });
        const bool succeeded = result != report.results.end() && result->succeeded;
        table.add({{std::to_string(step.id)},
                   succeeded ? Span{context.text("cli.report.done"), Paint::good}
                             : Span{context.text("cli.report.failed"), Paint::danger},
                   {labels::verb(step.kind, context.texts), Paint::faint},
                   {labels::subject(step)}});
    }
    table.print(context.console);

    const auto failures = report.failures();
    if (!failures.empty()) context.console.line(context.text("report.failures.title"), Paint::danger);
    for (const auto& failure : failures)
        context.console.line("  " + failure.operation.displayName + ": "
                             + context.texts.text(failure.reason));

    const auto* counts = report.mode == RemovalMode::reset ? "report.summary.clearedCount %lld %lld"
                                                           : "report.summary.removedCount %lld %lld";
    context.console.line(context.text(
        counts, {number(report.operations.size() - failures.size()), number(report.operations.size())}));
    if (report.reclaimedBytes)
        context.console.line(
            context.text("cli.report.quarantine %@ %@", {labels::size(report.reclaimedBytes, context.texts),
                                                         report.quarantineRoot.string()}));
    if (report.manifestFailure)
        context.console.line(
            context.text("cli.report.noManifest %@", {context.texts.text(*report.manifestFailure)}),
            Paint::danger);
    if (report.verification) printSurvivors(*report.verification, context);
}

} // namespace tidwen
