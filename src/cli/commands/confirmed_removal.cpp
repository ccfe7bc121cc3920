#include "cli/commands/confirmed_removal.h"

#include "cli/commands/lock_refusal.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/removal_output.h"
#include "cli/commands/review_remark.h"
#include "cli/console.h"
#include "cli/json_output.h"
#include "cli/labels.h"
#include "cli/selection.h"
#include "quarantine/trash_lock.h"
#include "removal/own_rights.h"
#include "removal/removal_executor.h"
#include "removal/removal_verification.h"
#include "scan/residue_scanner.h"

namespace tidwen {

namespace {

tl::expected<SelectionRequest, Message> readRequest(const Arguments& arguments, RemovalMode mode) {
    SelectionRequest request{.mode = mode, .selectors = arguments.values("--select")};
    if (!arguments.has("--risk")) return request;
    if (!request.selectors.empty()) return tl::unexpected(Message{"cli.select.notWithRisk"});
    auto tiers = parseTiers(arguments.values("--risk"));
    if (!tiers) return tl::unexpected(std::move(tiers.error()));
    request.tiers = std::move(*tiers);
    return request;
}

std::vector<AppRecord> records(const std::vector<RemovalTarget>& targets) {
    std::vector<AppRecord> result;
    for (const auto& target : targets)
        result.push_back({target.target.name, target.target.bundleID});
    return result;
}

/// What is taken and what is not.
struct Choice {
    RemovalMode mode;
    std::vector<RemovalTarget> targets;
    std::vector<Trace> left;
};

/// One removal, from the chosen traces to its report.
class Removal {
  public:
    Removal(const CommandContext& context, Mac& mac, Choice choice)
        : context_(context),
          mac_(mac),
          mode_(choice.mode),
          targets_(std::move(choice.targets)),
          left_(std::move(choice.left)),
          apps_(records(targets_)) {}

    /// Why it must not begin with the rights of this process, which is all that a volume has.
    std::optional<Message> obstacle() const {
        if (!mac_.volume) return std::nullopt;
        const auto items = obstaclesToBegin(plan(dryLayout()), mac_.system.files);
        if (items.empty()) return std::nullopt;
        return Message{"cli.remove.notYours %@ %lld", {items.back().string(), std::to_string(items.size())}};
    }

    void showPlan() const {
        const auto layout = dryLayout();
        const auto plan = this->plan(layout);
        if (context_.arguments.json) {
            context_.console.document(json::document(plan));
        } else {
            printPlan(plan, layout, context_);
            printLeft(left_, context_);
        }
    }

    bool confirmed() const {
        if (!context_.arguments.yes && context_.console.canAsk() && !context_.arguments.json) {
            printSummary(targets_, context_);
            printLeft(left_, context_);
        }
        const auto* question =
            mode_ == RemovalMode::reset ? "cli.reset.question %@" : "cli.remove.question %@";
        return agreed(context_, context_.text(question, {labels::names(apps_)}));
    }

    ExitStatus execute() {
        auto& files = mac_.system.files;
        const auto lock = lockTrash(mac_.system.user, files);
        if (!lock && lock.error().fault == FileFault::busy) return refuseWithoutLock(context_, lock.error());
        if (!lock) return cannotBegin(lock.error());
        const auto date = mac_.system.clock.now();
        const auto layout = createQuarantineFolder(apps_, date, mac_.system.user, files);
        if (!layout) return cannotBegin(layout.error());
        const auto plan = this->plan(*layout);
        context_.console.progress(context_.text("cli.remove.progress %@", {labels::names(apps_)}));
        RemovalExecutor executor({files, mac_.userRunner, mac_.privilegedRunner, mac_.system.log});
        auto report = executor.execute(plan, *layout, apps_, mode_, date);
        if (!report) {
            (void)files.removeEmptyDirectory(layout->root);
            return cannotBegin(report.error());
        }
        report->verification =
            verifyRemoval(targets_, PermissionAudit(files, mac_.system.user, context_.texts));
        if (const auto size = files.treeSize(layout->root, traceSizeEntryLimit))
            report->reclaimedBytes = static_cast<std::int64_t>(size->allocatedBytes);
        show(*report);
        const bool isComplete = report->failures().empty() && !report->manifestFailure;
        remindOfReview(context_, mac_.system.defaults, isComplete);
        return isComplete ? ExitStatus::done : ExitStatus::someFailed;
    }

  private:
    QuarantineLayout dryLayout() const {
        return makeLayout(apps_, mac_.system.clock.now(), mac_.system.user);
    }

    std::vector<RemovalOperation> plan(const QuarantineLayout& layout) const {
        return buildRemovalPlan(targets_, layout, mode_, context_.texts);
    }

    ExitStatus cannotBegin(const FileError& error) const {
        return context_.refuse(
            {"cli.remove.cannotBegin %@ %@", {error.path.string(), context_.text(failureKey(error.fault))}});
    }

    void show(const RemovalReport& report) const {
        if (context_.arguments.json) {
            context_.console.document(json::document(report, context_.texts));
            return;
        }
        printReport(report, context_);
        printLeft(left_, context_);
        if (const auto undo = undoCommandLine(report.quarantineRoot, context_, mac_))
            context_.console.line(context_.text("cli.undo.hint %@", {*undo}));
    }

    const CommandContext& context_;
    Mac& mac_;
    RemovalMode mode_;
    std::vector<RemovalTarget> targets_;
    std::vector<Trace> left_;
    std::vector<AppRecord> apps_;
};

} // namespace

bool agreed(const CommandContext& context, const std::string& question) {
    if (context.arguments.yes) return true;
    if (!context.console.canAsk()) {
        context.refuse({"cli.remove.needsYes"});
        return false;
    }
    if (context.console.ask(question, {"y", "yes", context.text("cli.answer.yes")})) return true;
    context.console.complain(context.text("cli.remove.cancelled"));
    return false;
}

ExitStatus removeFound(const CommandContext& context, Mac& mac, const std::vector<ScanResult>& found,
                       RemovalMode mode, Chosen chosen) {
    auto request = readRequest(context.arguments, mode);
    if (!request) return context.refuse(request.error());
    if (chosen == Chosen::all && request->selectors.empty() && !request->tiers)
        request->tiers = {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive};
    auto targets = chooseTraces(found, *request, HostPaths(mac.volume));
    if (!targets) return context.refuse(targets.error());
    if (targets->empty()) return context.refuse({"error.nothingToRemove"});

    auto left = leftInPlace(found, *targets, mode);
    Removal removal(context, mac, {mode, std::move(*targets), std::move(left)});
    const bool isDryRun = context.arguments.has("--dry-run");
    if (isDryRun) removal.showPlan();
    if (const auto obstacle = removal.obstacle()) return context.refuse(*obstacle);
    if (isDryRun) return ExitStatus::done;
    return removal.confirmed() ? removal.execute() : ExitStatus::refused;
}

std::vector<OptionSyntax> removalOptions() {
    return {{"--select", "ITEMS", "Take exactly these: paths, names or identifiers that are shown"},
            {"--risk", "TIERS", "Take the items of these tiers: safe,review,sensitive"},
            {"--dry-run", "", "Print the numbered steps and change nothing"}};
}

} // namespace tidwen
