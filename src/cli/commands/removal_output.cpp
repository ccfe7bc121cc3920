#include "cli/commands/removal_output.h"

#include "base/byte_sum.h"
#include "base/path.h"
#include "cli/console.h"
#include "cli/labels.h"
#include "cli/selection.h"
#include "cli/table.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "operations/stepwise_run.h"
#include "program/mac.h"
#include "removal/chosen_items.h"
#include "removal/findings.h"
#include "removal/removal_report.h"
#include "removal/stay_reason.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "sweep/leftover_filter.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

/// The destination relative to the folder of the run.
std::string belowRoot(const Path& path, const Path& root) {
    return path.isWithin(root) && path != root ? path.string().substr(root.string().size() + 1)
                                               : path.string();
}

/// Without the name when the item keeps it.
std::string destination(const operation::Move& move, const Path& root) {
    const auto& place = move.destination;
    return place.lastComponent() == move.source.lastComponent() ? belowRoot(place.parent(), root) + "/"
                                                                : belowRoot(place, root);
}

} // namespace

void printItems(const RemovalChoice& choice, const CommandContext& context) {
    const auto& findings = choice.findings();
    for (const auto& each : choice.going()) {
        const auto group = static_cast<std::size_t>(each.group - findings.groups().data());
        context.console.line(each.group->target.name, Style::strong);
        Table table({Table::Align::left, Table::Align::right});
        for (const auto* trace : each.traces) {
            if (findings.resetsNothing(group, *trace)) continue;
            table.add({labels::risk(trace->risk, context.texts),
                       {labels::size(*trace, context.texts)},
                       {labels::category(trace->category, context.texts), Style::faint},
                       {displayName(*trace, context.texts)}});
        }
        table.print(context.console, 2);
    }
}

void printConfirmation(const ConfirmationTexts& words, const CommandContext& context) {
    auto& console = context.console;
    console.line(words.summary, Style::strong);
    for (const auto& tier : words.breakdown)
        console.line("  " + tier);
    if (words.reversible) console.line(*words.reversible);
    if (words.unloaded) console.line(*words.unloaded);
    if (words.permanentHeading) console.line(*words.permanentHeading, Style::danger);
    for (const auto& name : words.permanent)
        console.line("  " + name);
    if (words.permissionsReset) console.line(*words.permissionsReset);
    if (words.password) console.line(*words.password);
}

namespace {

/// Prints the instruction of a trace that only the user can remove; true if it is one.
bool isGuidance(const Trace& trace, const CommandContext& context) {
    const auto* guidance = std::get_if<action::Guidance>(&trace.action);
    if (guidance) context.console.line(context.texts.text(guidance->step.instruction), Style::caution);
    return guidance != nullptr;
}

/// What a later listing shows in the same way; too much to repeat here.
class ListedAgain {
  public:
    ListedAgain(RemovalSubject::Kind kind, const CommandContext& context) : kind_(kind), context_(context) {}

    bool takes(const StayingTrace& item) {
        if (!isListedAgain(item, kind_)) return false;
        ++count_;
        sum_.add(item.trace.sizeBytes, item.trace.isSizePartial);
        return true;
    }

    void print() const {
        if (count_ == 0) return;
        const auto count = labels::countAndSize(count_, sum_, context_.texts);
        const bool areInstallers = kind_ == RemovalSubject::Kind::installers;
        context_.console.line(
            context_.text(areInstallers ? "cli.installers.left %@" : "cli.orphans.left %@", {count}),
            Style::caution);
    }

  private:
    RemovalSubject::Kind kind_;
    const CommandContext& context_;
    std::size_t count_ = 0;
    ByteSum sum_;
};

} // namespace

void printLeft(const std::vector<Remainder>& left, RemovalSubject::Kind kind, const CommandContext& context) {
    ListedAgain listed(kind, context);
    // A search names what is meant: the rest was not left out, it was never asked for.
    const LeftoverFilter filter{.query = searchText(context.arguments)};
    std::vector<std::string> scan = {"scan"};
    bool isAnyLeft = false;
    for (const auto& each : left) {
        const auto& target = each.target;
        const auto name = target.bundleID.empty() ? target.bundleURL.string() : target.bundleID;
        for (const auto& item : each.traces) {
            if (!filter.passes(item.trace)) continue;
            if (listed.takes(item) || isGuidance(item.trace, context)) continue;
            if (!std::exchange(isAnyLeft, true))
                context.console.line(context.text("cli.remove.left"), Style::caution);
            context.console.line({{"  " + displayName(item.trace, context.texts)},
                                  {"  " + context.texts.text(item.describe()), Style::faint}});
            const bool isFoundAgain = item.reason != StayReason::listGone;
            if (isFoundAgain && std::ranges::find(scan, name) == scan.end()) scan.push_back(name);
        }
    }
    listed.print();
    if (scan.size() > 1) context.offer("cli.remove.scanLeft %@", context.commandLine(scan));
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
                   {labels::subject(step) + (move ? " -> " + destination(*move, layout.root) : "")}});
    }
    table.print(context.console);
}

namespace {

/// Prints how to remove remaining permissions.
void printSurvivors(const RemovalReport& report, const CommandContext& context) {
    if (!report.verification) return;
    const auto isRevocable = std::not_fn(std::mem_fn(&PermissionGrant::isPathClient));
    for (const auto& app : report.verification->apps)
        if (!report.keepsItsPermissions(app.bundleID) && std::ranges::any_of(app.tccSurvivors, isRevocable))
            context.offer("cli.report.revoke %@",
                          context.commandLine({"permissions", "revoke", app.bundleID}));
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
        console.line("  " + failure.subject + ": " + failure.reason);

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
        console.line("  " + item.subject + ": " + item.reason, Style::danger);
    for (const auto& line : words.verification)
        console.line(line, words.isClean ? Style::plain : Style::caution);
    printSurvivors(report, context);
}

} // namespace tidwen
