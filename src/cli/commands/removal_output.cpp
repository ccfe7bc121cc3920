#include "cli/commands/removal_output.h"

#include "cli/console.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "scan/matching/default_selection.h"

#include <algorithm>
#include <functional>

namespace tidwen {

namespace {

/// The part of a destination that tells more than the folder it lies in.
std::string belowRoot(const Path& path, const Path& root) {
    return path.isWithin(root) && path != root ? path.string().substr(root.string().size() + 1)
                                               : path.string();
}

} // namespace

void printItems(const std::vector<RemovalTarget>& targets, const CommandContext& context) {
    for (const auto& target : targets) {
        context.console.line(target.target.name, Paint::strong);
        Table table({Table::Align::left, Table::Align::right});
        for (const auto& trace : target.traces)
            table.add({labels::risk(trace.risk, context.texts),
                       {labels::size(trace.sizeBytes, context.texts)},
                       {labels::category(trace.category, context.texts), Paint::faint},
                       {trace.displayName}});
        table.print(context.console, 2);
    }
}

void printConfirmation(const ConfirmationTexts& words, const CommandContext& context, const Mac& mac) {
    auto& console = context.console;
    console.line(words.summary, Paint::strong);
    for (const auto& tier : words.breakdown)
        console.line("  " + tier);
    if (words.reversible) console.line(*words.reversible);
    if (words.permanentHeading) console.line(*words.permanentHeading, Paint::danger);
    for (const auto& name : words.permanent)
        console.line("  " + name);
    if (words.permissionsReset) console.line(*words.permissionsReset);
    // On a volume there is nobody to ask for a password.
    if (words.password && mac.administrator) console.line(*words.password);
}

namespace {

/// Prints what only the user can do, and gives the rest.
std::vector<Trace> withoutGuidance(const std::vector<Trace>& left, const CommandContext& context) {
    std::vector<Trace> takeable;
    for (const auto& trace : left) {
        if (const auto* guidance = std::get_if<action::Guidance>(&trace.action))
            context.console.line(guidance->step.instruction, Paint::caution);
        else
            takeable.push_back(trace);
    }
    return takeable;
}

/// The words of a removal that takes what the last one took, once that is undone, and `left` too.
std::vector<std::string> laterRemoval(const RemovalReport& report, const std::vector<Remainder>& left,
                                      const CommandContext& context) {
    std::vector<std::string> words = {context.arguments.command}, choice;
    if (words.front() == "orphans") words.emplace_back("--remove");
    const auto select = [&](const std::string& item) { choice.insert(choice.end(), {"--select", item}); };
    for (const auto& step : report.operations)
        if (const auto* application = std::get_if<operation::UnregisterApp>(&step.kind)) {
            words.push_back(application->bundleURL.string());
            select(step.bundleID);
        }
    for (const auto& each : left)
        for (const auto& trace : each.traces)
            select(trace.displayName);
    // --risk takes nothing that is in doubt.
    if (std::ranges::all_of(left, [](const Remainder& each) {
            return std::ranges::all_of(each.traces, [](const Trace& trace) { return isUndoubted(trace); });
        }))
        choice = {"--risk", "safe,review,sensitive"};
    words.insert(words.end(), choice.begin(), choice.end());
    return words;
}

} // namespace

void printLeft(const std::vector<Trace>& left, const CommandContext& context) {
    const auto takeable = withoutGuidance(left, context);
    if (takeable.empty()) return;
    const auto& command = context.arguments.command;
    const auto count = labels::countAndSize(takeable, context.texts);
    context.console.line(
        command == "installers"
            ? context.text("cli.installers.left %@", {count})
            : context.text("cli.remove.left %@ %@", {count, command == "orphans" ? "orphans" : "scan"}),
        Paint::caution);
}

void printRemainders(const RemovalReport& report, const std::optional<std::string>& undo,
                     const CommandContext& context) {
    std::vector<Trace> found; // by a later search
    std::vector<Remainder> gone;
    for (const auto& each : report.left) {
        if (!each.needsUndo) {
            found.insert(found.end(), each.traces.begin(), each.traces.end());
            continue;
        }
        gone.push_back({each.target, withoutGuidance(each.traces, context), true});
        if (gone.back().traces.empty()) gone.pop_back();
    }
    printLeft(found, context);
    if (gone.empty()) return;
    context.console.line(context.text("cli.remove.remains"), Paint::caution);
    for (const auto& each : gone)
        for (const auto& trace : each.traces)
            context.console.line(
                {{"  " + trace.displayName}, {"  " + labels::whyLeft(trace, context.texts), Paint::faint}});
    if (!undo) return;
    context.console.line(context.text("cli.remove.takeRemains"));
    context.console.line("  " + *undo);
    context.console.line("  " + context.commandLine(laterRemoval(report, gone, context)));
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

namespace {

/// What can be done about permissions that are left.
void printSurvivors(const RemovalReport& report, const CommandContext& context) {
    if (!report.verification) return;
    const auto isByPath = [](const PermissionGrant& grant) { return grant.isPathClient; };
    for (const auto& app : report.verification->apps) {
        if (report.keepsItsPermissions(app.bundleID)) continue;
        const auto& grants = app.tccSurvivors;
        if (std::ranges::any_of(grants, std::not_fn(isByPath)))
            context.console.line(context.text(
                "cli.report.revoke %@", {context.commandLine({"permissions", "revoke", app.bundleID})}));
        if (std::ranges::any_of(grants, isByPath)) context.console.line(context.text("cli.report.pathGrant"));
    }
}

} // namespace

void printReport(const RemovalReport& report, const ReportTexts& words, const CommandContext& context) {
    auto& console = context.console;
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
    table.print(console);

    if (!words.failures.empty()) console.line(context.text("report.failures.title"), Paint::danger);
    for (const auto& failure : words.failures)
        console.line("  " + failure);

    if (words.failures.empty()) console.line(words.summary, Paint::good);
    console.line(words.counts);
    if (words.reclaimed) console.line(*words.reclaimed);
    if (words.reclaimed)
        console.line(context.text("cli.report.quarantine %@", {report.quarantineRoot.string()}));
    for (const auto& folder : report.emptiedFolders)
        console.line(context.text("cli.report.emptied %@", {folder.string()}), Paint::caution);
    for (const auto& link : report.deadLinks)
        console.line(context.text("cli.report.deadLink %@", {link.string()}), Paint::caution);
    if (report.manifestFailure)
        console.line(context.text("cli.report.noManifest %@", {context.texts.text(*report.manifestFailure)}),
                     Paint::danger);
    for (const auto& item : report.unsettled)
        console.line("  " + item + ": " + context.text("failure.moveUnfinished"), Paint::danger);
    for (const auto& line : words.verification)
        console.line(line, words.isClean ? Paint::plain : Paint::caution);
    printSurvivors(report, context);
}

} // namespace tidwen
