#include "cli/commands/removal_output.h"

#include "base/byte_sum.h"
#include "base/path.h"
#include "cli/console.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "operations/stepwise_run.h"
#include "program/mac.h"
#include "removal/chosen_items.h"
#include "removal/removal_report.h"
#include "removal/stay_reason.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <functional>
#include <variant>

namespace tidwen {

namespace {

/// The destination relative to the folder of the run.
std::string belowRoot(const Path& path, const Path& root) {
    return path.isWithin(root) && path != root ? path.string().substr(root.string().size() + 1)
                                               : path.string();
}

} // namespace

void printItems(const std::vector<GoingGroup>& going, const CommandContext& context) {
    for (const auto& each : going) {
        context.console.line(each.group->target.name, Style::strong);
        Table table({Table::Align::left, Table::Align::right});
        for (const auto* trace : each.traces)
            table.add({labels::risk(trace->risk, context.texts),
                       {labels::size(*trace, context.texts)},
                       {labels::category(trace->category, context.texts), Style::faint},
                       {trace->displayName}});
        table.print(context.console, 2);
    }
}

void printConfirmation(const ConfirmationTexts& words, const CommandContext& context, const Mac& mac) {
    auto& console = context.console;
    console.line(words.summary, Style::strong);
    for (const auto& tier : words.breakdown)
        console.line("  " + tier);
    if (words.reversible) console.line(*words.reversible);
    if (words.permanentHeading) console.line(*words.permanentHeading, Style::danger);
    for (const auto& name : words.permanent)
        console.line("  " + name);
    if (words.permissionsReset) console.line(*words.permissionsReset);
    // On a volume no password is asked for.
    if (words.password && mac.administrator) console.line(*words.password);
}

namespace {

/// Prints the instruction of a trace that only the user can remove; true if it is one.
bool isGuidance(const Trace& trace, const CommandContext& context) {
    const auto* guidance = std::get_if<action::Guidance>(&trace.action);
    if (guidance) context.console.line(guidance->step.instruction, Style::caution);
    return guidance != nullptr;
}

/// Counts what a later search finds and removes.
class FoundAgain {
  public:
    explicit FoundAgain(const CommandContext& context) : context_(context) {}

    /// An application that stays because only some of its items were selected is not mentioned.
    void add(const Trace& trace) {
        if (isGuidance(trace, context_) || trace.category == TraceCategory::application) return;
        ++count_;
        sum_.add(trace.sizeBytes, trace.isSizePartial);
    }

    void print() const {
        if (count_ == 0) return;
        const auto& command = context_.arguments.command;
        const auto count = labels::countAndSize(count_, sum_, context_.texts);
        context_.console.line(
            command == "installers"
                ? context_.text("cli.installers.left %@", {count})
                : context_.text("cli.remove.left %@ %@", {count, command == "orphans" ? "orphans" : "scan"}),
            Style::caution);
    }

  private:
    const CommandContext& context_;
    std::size_t count_ = 0;
    ByteSum sum_;
};

/// The command line of a removal that, after an undo, removes what the last one removed and `left` too.
std::vector<std::string> laterRemoval(const RemovalReport& report, const std::vector<StayingTrace>& left,
                                      const CommandContext& context) {
    std::vector<std::string> words = {context.arguments.command}, choice;
    const bool areLeftovers = words.front() == "orphans";
    if (areLeftovers) words.emplace_back("--remove");
    const auto select = [&](const std::string& item) { choice.insert(choice.end(), {"--select", item}); };
    for (const auto& step : report.operations)
        if (const auto* application = std::get_if<operation::UnregisterApp>(&step.kind)) {
            words.push_back(application->bundleURL.string());
            if (std::ranges::find(choice, step.bundleID) == choice.end()) select(step.bundleID);
        } else if (areLeftovers && std::holds_alternative<operation::Move>(step.kind))
            select(step.displayName); // only these: the sweep also found those of others
    for (const auto& item : left)
        select(item.trace.displayName);
    // --risk skips contested and doubtful items.
    if (!areLeftovers && std::ranges::all_of(left, isUndoubted, &StayingTrace::trace))
        choice = {"--risk", "safe,review,sensitive"};
    words.insert(words.end(), choice.begin(), choice.end());
    return words;
}

} // namespace

void printLeft(const std::vector<StayingGroup>& staying, const CommandContext& context) {
    FoundAgain found(context);
    for (const auto& each : staying)
        for (const auto& item : each.items)
            found.add(*item.trace);
    found.print();
}

void listLeft(const char* heading, const std::vector<StayingTrace>& left, const CommandContext& context) {
    if (!left.empty()) context.console.line(context.text(heading), Style::caution);
    for (const auto& item : left)
        context.console.line(
            {{"  " + item.trace.displayName}, {"  " + context.texts.text(item.describe()), Style::faint}});
}

void printRemainders(const RemovalReport& report, const std::optional<std::string>& undo,
                     const CommandContext& context) {
    using Reach = Remainder::Reach;
    FoundAgain found(context);
    std::vector<StayingTrace> claimed, gone;
    for (const auto& each : report.left)
        for (const auto& item : each.traces)
            if (each.reach == Reach::search)
                found.add(item.trace);
            else if (!isGuidance(item.trace, context))
                (each.reach == Reach::claimant ? claimed : gone).push_back(item);
    found.print();
    listLeft("cli.remove.claimed", claimed, context);
    listLeft("cli.remove.remains", gone, context);
    if (gone.empty() || !undo) return;
    context.console.line(context.text("cli.remove.takeRemains"));
    context.console.verbatim("  " + *undo);
    context.console.verbatim("  " + context.commandLine(laterRemoval(report, gone, context)));
}

void printPlan(const std::vector<RemovalOperation>& plan, const QuarantineLayout& layout,
               const CommandContext& context) {
    context.console.line(context.text("cli.plan.heading %@", {layout.root.string()}));
    Table table({Table::Align::right});
    for (const auto& step : plan) {
        const auto* move = std::get_if<operation::Move>(&step.kind);
        table.add({{std::to_string(step.id)},
                   {step.requiresRoot ? context.text("cli.plan.administrator") : "", Style::caution},
                   {labels::verb(step.kind, context.texts), Style::faint},
                   {labels::subject(step)
                    + (move ? " -> " + belowRoot(move->destination, layout.root) : std::string())}});
    }
    table.print(context.console);
}

namespace {

/// Prints how to remove remaining permissions.
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

/// On a volume no job runs and macOS need not be notified.
bool isIdle(const RemovalOperation& step, const CommandContext& context) {
    return context.arguments.volume
           && (std::holds_alternative<operation::Bootout>(step.kind)
               || std::holds_alternative<operation::UnregisterApp>(step.kind)
               || std::holds_alternative<operation::FlushPreferences>(step.kind));
}

bool didNothing(const RemovalReport& report, const CommandContext& context) {
    return std::ranges::all_of(report.operations,
                               [&](const RemovalOperation& step) { return isIdle(step, context); });
}

} // namespace

void printReport(const RemovalReport& report, const ReportTexts& words, const CommandContext& context) {
    auto& console = context.console;
    Table table({Table::Align::right});
    for (const auto& step : report.operations) {
        const auto result = std::find_if(report.results.begin(), report.results.end(),
                                         [&](const OperationResult& r) { return r.operationID == step.id; });
        const bool isKnown = result != report.results.end();
        table.add({{std::to_string(step.id)},
                   isIdle(step, context)          ? StyledText{context.text("cli.report.idle"), Style::faint}
                   : isKnown && result->succeeded ? StyledText{context.text("cli.report.done"), Style::good}
                   : isKnown && wasNotBegun(*result)
                       ? StyledText{context.text("cli.report.notBegun"), Style::caution}
                       : StyledText{context.text("cli.report.failed"), Style::danger},
                   {labels::verb(step.kind, context.texts), Style::faint},
                   {labels::subject(step)}});
    }
    table.print(console);

    if (!words.failures.empty()) console.line(context.text("report.failures.title"), Style::danger);
    for (const auto& failure : words.failures)
        console.line("  " + failure);

    if (words.stopped) console.line(*words.stopped, Style::caution);
    if (didNothing(report, context)) {
        console.line(context.text("cli.report.nothingOnVolume"));
    } else {
        if (words.isWhole) console.line(words.summary, words.failures.empty() ? Style::good : Style::plain);
        console.line(words.counts);
    }
    if (words.reclaimed) console.line(*words.reclaimed);
    if (words.reclaimed)
        console.line(context.text("cli.report.quarantine %@", {report.quarantineRoot.string()}));
    for (const auto& remark : words.remarks)
        console.line(remark, Style::caution);
    if (report.manifestFailure)
        console.line(context.text("cli.report.noManifest %@", {context.texts.text(*report.manifestFailure)}),
                     Style::danger);
    for (const auto& item : words.unsettled)
        console.line("  " + item, Style::danger);
    for (const auto& line : words.verification)
        console.line(line, words.isClean ? Style::plain : Style::caution);
    printSurvivors(report, context);
}

} // namespace tidwen
