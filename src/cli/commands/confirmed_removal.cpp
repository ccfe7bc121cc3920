#include "cli/commands/confirmed_removal.h"

#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "cli/arguments.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/removal_output.h"
#include "cli/commands/review_note.h"
#include "cli/console.h"
#include "cli/incomplete_output.h"
#include "cli/json/output.h"
#include "cli/selection.h"
#include "operations/removal_operation.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "quarantine/manifest.h"
#include "quarantine/not_undone.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_choice.h"
#include "removal/removal_flow_model.h"
#include "removal/removal_plan.h"
#include "removal/removal_refusal.h"
#include "removal/removal_report.h"
#include "removal/removal_texts.h"
#include "sweep/leftover_filter.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

tl::expected<SelectionRequest, Message> readRequest(const CommandContext& context) {
    const auto& arguments = context.arguments;
    SelectionRequest request{.selectors = arguments.values("--select")};
    if (arguments.command == "orphans" || arguments.command == "installers")
        request.listing = arguments.command;
    if (!arguments.has("--risk")) return request;
    if (!request.selectors.empty()) return tl::unexpected(Message{"cli.select.notWithRisk"});
    auto tiers = parseTiers(arguments.values("--risk"), context.texts);
    if (!tiers) return tl::unexpected(std::move(tiers.error()));
    request.tiers = std::move(*tiers);
    return request;
}

/// Selects in the model what the request names; returns why it is refused.
std::optional<Message> choose(RemovalFlowModel& model, const SelectionRequest& request, Chosen chosen,
                              RemovalMode mode, const HostPaths& hostPaths, const Texts& texts) {
    model.setMode(mode);
    if (request.isEmpty()) {
        if (chosen == Chosen::byDefault) model.selectDefaults();
        return std::nullopt;
    }
    const auto selection = chooseTraces(model.choice().findings().groups(), request, mode, hostPaths, texts);
    if (!selection) return selection.error();
    model.select(selection->ids, selection->named);
    return std::nullopt;
}

/// Deselects what the filter hides.
void narrow(RemovalFlowModel& model, const LeftoverFilter& filter) {
    if (!filter.isActive()) return;
    std::vector<Uuid> hidden;
    for (const auto& group : model.choice().findings().groups())
        for (const auto& trace : group.traces)
            if (!filter.passes(trace)) hidden.push_back(trace.id);
    model.setSelected(hidden, false);
}

/// The plan that would be executed now.
struct Preview {
    QuarantineLayout layout;
    std::vector<RemovalOperation> plan;
};

Preview preview(const Mac& mac, const RemovalChoice& choice) {
    const auto targets = choice.targets();
    std::vector<AppRecord> apps;
    apps.reserve(targets.size());
    for (const auto& target : targets)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = makeLayout(apps, mac.system.clock.now(), mac.system.user);
    return {layout, buildRemovalPlan(targets, layout, choice.mode())};
}

ExitStatus refuse(const RemovalRefusal& refusal, const CommandContext& context) {
    const auto status = context.refuse(refusal.reason);
    if (refusal.reason.key == "error.reachedThroughLink %@ %@")
        context.advise({"cli.next %@"},
                       context.commandLine({context.arguments.command, refusal.reason.arguments[1].text()}));
    if (!refusal.unmovableItems.empty()) context.error({"cli.remove.otherAccount"});
    return status;
}

/// Prints on standard error, also with --json and for any selection.
void reportSkipped(const std::vector<Path>& names, const CommandContext& context) {
    for (const auto& path : names)
        context.error({"cli.remove.skippedName %@", {path.string()}});
}

/// Prints messages beside a document on standard error.
template<class Print>
void besideDocument(const CommandContext& context, const Print& print) {
    Console errors = context.console.onErrors();
    print(CommandContext{context.arguments, context.texts, errors});
}

/// Reports names and identifiers that could not be searched for; after the removal no search can make up for
/// it.
void printUnsearchable(const RemovalChoice& choice, const CommandContext& context) {
    for (const auto& result : choice.findings().scanned())
        printUnsearchable(result, context);
}

void show(const Preview& preview, const RemovalChoice& choice, const CommandContext& context) {
    const auto& unseen = choice.findings().unseen();
    if (context.arguments.json) {
        context.console.document(json::document(preview.plan, context.texts));
        return besideDocument(context, [&](const auto& beside) { printUnseen(unseen, beside); });
    }
    printPlan(preview.plan, preview.layout, context);
    printLeft(choice.remainders(), choice.subject().kind, context);
    printUnsearchable(choice, context);
    printUnseen(unseen, context);
}

bool confirmed(const CommandContext& context, const Mac& mac, const RemovalChoice& choice) {
    const auto words = confirmationTexts(choice.summary(), choice.subject().text(context.texts),
                                         choice.mode(), mac.rights(), context.texts);
    const auto show = [&](const CommandContext& shown) {
        printItems(choice, shown);
        printConfirmation(words, shown);
        printLeft(choice.remainders(), choice.subject().kind, shown);
        printUnsearchable(choice, shown);
        printUnseen(choice.findings().unseen(), shown);
    };
    if (!context.arguments.yes && context.console.canAsk())
        context.arguments.json || context.arguments.quiet ? besideDocument(context, show) : show(context);
    return agreed(context, context.text("cli.question %@", {words.title}), "cli.remove.needsYes");
}

/// `begun`: the selection before the run.
void show(const stage::Report& shown, const RemovalChoice& begun, const CommandContext& context,
          const Mac& mac) {
    const auto& [report, subject] = shown;
    if (context.arguments.json) {
        context.console.document(json::document(report, subject, context.texts));
        return;
    }
    printReport(report, reportTexts(report, subject.text(context.texts), context.texts), context);
    printUnsearchable(begun, context);
    const auto undo =
        report.quarantineRoot.isRoot() ? std::nullopt : undoCommandLine(report.quarantineRoot, context, mac);
    printLeft(report.left, subject.kind, context);
    printUnseen(report.unseen, context);
    if (!undo) return;
    const auto lost = !begun.summary().permanent.empty()  ? NotUndone::passwords
                      : begun.summary().resetsPermissions ? NotUndone::permissions
                                                          : NotUndone::nothing;
    if (const auto words = describe(lost)) context.console.line(context.texts.text(*words), Style::faint);
    context.offer("cli.undo.hint %@", *undo);
}

/// Nothing was found that the call takes, as after an earlier one: an empty document, and no refusal.
ExitStatus nothingToDo(const RemovalChoice& choice, const CommandContext& context) {
    const auto& findings = choice.findings();
    const RemovalReport empty{
        .apps = {}, .quarantineRoot = Path("/"), .manifestURL = Path("/"), .operations = {}};
    if (context.arguments.json)
        context.console.document(context.arguments.has("--dry-run")
                                     ? json::document(std::vector<RemovalOperation>{}, context.texts)
                                     : json::document(empty, choice.subject(), context.texts));
    else
        context.console.line(context.text("error.nothingToRemove"));
    const auto remarks = [&](const CommandContext& shown) {
        printLeft(choice.remainders(), choice.subject().kind, shown);
        printUnsearchable(choice, shown);
        printUnseen(findings.unseen(), shown);
    };
    context.arguments.json ? besideDocument(context, remarks) : remarks(context);
    reportSkipped(findings.skippedNames(), context);
    return findings.unseen().isNothing() && findings.skippedNames().empty() ? ExitStatus::done
                                                                            : ExitStatus::someFailed;
}

} // namespace

bool agreed(const CommandContext& context, const std::string& question, std::string_view refusal) {
    if (context.arguments.yes) return true;
    if (!context.console.canAsk()) {
        context.refuse({std::string(refusal)});
        return false;
    }
    if (context.console.ask(question, {"y", "yes", context.text("cli.answer.yes")})) return true;
    context.refuse({"cli.remove.cancelled"});
    return false;
}

ExitStatus removeFound(const CommandContext& context, Mac& mac, FlowSession& session, RemovalMode mode,
                       Chosen chosen) {
    const auto request = readRequest(context);
    if (!request) return context.misuse(request.error());
    auto& model = session.model();
    if (const auto refused = choose(model, *request, chosen, mode, HostPaths(mac.volume), context.texts))
        return context.refuse(*refused);
    narrow(model, {.query = searchText(context.arguments)});
    const auto& choice = model.choice();
    const auto refusal = model.refusal();
    if (refusal && choice.going().empty())
        return refusal->reason.key == "error.nothingToRemove" && request->selectors.empty()
                   ? nothingToDo(choice, context)
                   : refuse(*refusal, context);
    const auto planned = preview(mac, choice);
    const auto& skipped = choice.findings().skippedNames();
    const bool isDryRun = context.arguments.has("--dry-run");
    if (isDryRun) {
        show(planned, choice, context);
        reportSkipped(skipped, context);
    }
    if (refusal) return refuse(*refusal, context);
    // Naming each item means that no other items are expected.
    const bool namesItems = !request->selectors.empty();
    if (isDryRun)
        return choice.findings().unseen().isNothing() && (skipped.empty() || namesItems)
                   ? ExitStatus::done
                   : ExitStatus::someFailed;
    if (!context.arguments.yes) session.letSignalsEnd();
    if (!confirmed(context, mac, choice)) return ExitStatus::refused;

    const RemovalChoice begun = choice;
    if (!session.remove()) {
        for (const auto& why : model.problems())
            context.report(why);
        return ExitStatus::refused;
    }
    const auto& shown = std::get<stage::Report>(model.stage());
    const auto& report = shown.report;
    show(shown, begun, context, mac);
    reportSkipped(report.skippedNames, context);
    const bool tookAll = report.skippedNames.empty() || namesItems;
    const bool isComplete =
        report.failures().empty() && !report.manifestFailure && tookAll && !report.missedAPermission();
    remindOfReview(context, mac.system.defaults, isComplete);
    return isComplete && !session.someLeftOut() && report.unseen.isNothing() ? ExitStatus::done
                                                                             : ExitStatus::someFailed;
}

std::optional<Message> idleOption(const Arguments& arguments, std::string_view meaningful) {
    for (const auto& option : removalOptions())
        if (option.name != meaningful && arguments.has(option.name))
            return Message{"cli.remove.idleOption %@", {std::string(option.name)}};
    return std::nullopt;
}

std::vector<OptionSyntax> removalOptions() {
    return {{"--select", "ITEMS", "cli.help.option.select"},
            {"--risk", "TIERS", "cli.help.option.risk"},
            {"--dry-run", "", "cli.help.option.dryRun"}};
}

} // namespace tidwen
