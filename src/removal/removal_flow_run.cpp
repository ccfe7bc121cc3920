// The removal itself: what is chosen, the quit prompts, the run, and its undo.

#include "quarantine/trash_lock.h"
#include "removal/background_step.h"
#include "removal/removal_flow_model.h"
#include "removal/removal_verification.h"

#include <algorithm>

namespace tidwen {

/// A removal while its applications are asked to quit.
struct RemovalFlowModel::Run {
    std::vector<RemovalTarget> targets; ///< those that take part
    std::size_t next = 0;               ///< the first one that was not asked yet
    RemovalMode mode = RemovalMode::uninstall;
    Stage cameFrom;
};

bool RemovalFlowModel::isEligible(const Trace& trace) const {
    if (trace.reversibility == Reversibility::manualOnly) return false;
    return mode_ == RemovalMode::uninstall
           || (trace.category != TraceCategory::application && trace.category != TraceCategory::receipts);
}

void RemovalFlowModel::setSelected(const std::set<Uuid>& ids, bool selected) {
    const auto choose = [&](const Trace& trace) {
        if (!ids.contains(trace.id)) return;
        if (!selected)
            selection_.erase(trace.id);
        else if (isEligible(trace))
            selection_.insert(trace.id);
    };
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        for (const auto& result : review->results)
            std::for_each(result.traces.begin(), result.traces.end(), choose);
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage_))
        for (const auto& group : orphans->result.groups)
            std::for_each(group.traces.begin(), group.traces.end(), choose);
    notify();
}

/// Going to reset and back gives the selection back that was there.
void RemovalFlowModel::setMode(RemovalMode mode) {
    const auto* review = std::get_if<stage::Review>(&stage_);
    if (!review || mode == mode_) return;
    mode_ = mode;
    if (mode == RemovalMode::uninstall) {
        selection_.insert(resetIneligible_.begin(), resetIneligible_.end());
        resetIneligible_.clear();
    } else {
        for (const auto& result : review->results)
            for (const auto& trace : result.traces)
                if (!isEligible(trace) && selection_.erase(trace.id) > 0) resetIneligible_.insert(trace.id);
    }
    notify();
}

std::vector<RemovalTarget> RemovalFlowModel::chosenTargets() const {
    std::vector<RemovalTarget> targets;
    const auto add = [&](const AppTarget& target, const std::vector<Trace>& traces) {
        RemovalTarget chosen{target, {}, false};
        for (const auto& trace : traces)
            if (selection_.contains(trace.id)) chosen.traces.push_back(trace);
        if (!chosen.traces.empty()) targets.push_back(std::move(chosen));
    };
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        for (const auto& result : review->results)
            add(result.target, result.traces);
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage_))
        for (const auto& group : orphans->result.groups) {
            AppTarget gone;
            gone.bundleID = group.bundleID;
            gone.name = group.name;
            add(gone, group.traces);
        }
    return targets;
}

RemovalSummary RemovalFlowModel::summary() const {
    std::vector<Trace> traces;
    for (const auto& target : chosenTargets())
        traces.insert(traces.end(), target.traces.begin(), target.traces.end());
    return summarize(traces, services_.texts.language());
}

void RemovalFlowModel::confirm() {
    if (std::holds_alternative<stage::Review>(stage_) || std::holds_alternative<stage::Orphans>(stage_))
        prepare(chosenTargets(), mode_);
}

void RemovalFlowModel::removeTraces(const std::string& name, std::vector<Trace> traces) {
    if (!isHome()) return;
    RemovalTarget target;
    target.target.name = name;
    target.traces = std::move(traces);
    std::vector<RemovalTarget> targets;
    if (!target.traces.empty()) targets.push_back(std::move(target));
    prepare(std::move(targets), RemovalMode::uninstall);
}

void RemovalFlowModel::prepare(std::vector<RemovalTarget> targets, RemovalMode mode) {
    errorMessage_.reset();
    if (targets.empty()) return fail(services_.texts.text("error.nothingToRemove"));
    auto run = std::make_shared<Run>(Run{std::move(targets), 0, mode, stage_});
    enter(stage::Removing{});
    quitNext(std::move(run));
}

void RemovalFlowModel::quitNext(std::shared_ptr<Run> run) {
    if (run->next == run->targets.size()) return execute(std::move(run));
    const auto& target = run->targets[run->next].target;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [&running = services_.running, bundleID = target.bundleID] {
            const bool wasRunning = !bundleID.empty() && running.isRunning(bundleID);
            return std::pair(wasRunning, !wasRunning || running.quit(bundleID, quitWait));
        },
        [run](RemovalFlowModel& self, std::pair<bool, bool> outcome) {
            const auto [wasRunning, hasQuit] = outcome;
            run->targets[run->next].isRunning = wasRunning;
            if (hasQuit) {
                ++run->next;
                return self.quitNext(run);
            }
            self.quitPromptContinuation_ = [&self, run](QuitPromptChoice choice) {
                if (choice == QuitPromptChoice::forceContinue)
                    ++run->next;
                else
                    run->targets.erase(run->targets.begin() + static_cast<std::ptrdiff_t>(run->next));
                self.quitNext(run);
            };
            self.pendingQuitPrompt_ = QuitPrompt{Uuid::random(), run->targets[run->next].target.name};
            self.notify();
        });
}

void RemovalFlowModel::answerQuitPrompt(QuitPromptChoice choice) {
    if (!pendingQuitPrompt_) return;
    pendingQuitPrompt_.reset();
    notify();
    if (auto answer = std::exchange(quitPromptContinuation_, nullptr)) answer(choice);
}

namespace {

/// The run from its folder to its verified report. Nothing was touched when it gives a reason instead.
tl::expected<RemovalReport, Message> carryOut(const RemovalFlowModel::Services& services,
                                              const UserEnvironment& user,
                                              const std::vector<RemovalTarget>& targets, RemovalMode mode) {
    const auto refused = [](const FileError& error) {
        return tl::unexpected(Message{std::string(failureKey(error.fault))});
    };
    const auto lock = lockTrash(user, services.files);
    if (!lock) return refused(lock.error());
    const auto date = services.clock.now();
    std::vector<AppRecord> apps;
    for (const auto& target : targets)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = createQuarantineFolder(apps, date, user, services.files);
    if (!layout) return refused(layout.error());
    const auto plan = buildRemovalPlan(targets, *layout, mode, services.texts);
    auto report = services.executor.execute(plan, *layout, apps, mode, date);
    if (!report) return refused(report.error());
    report->verification = verifyRemoval(targets, services.audit);
    if (const auto size = services.files.treeSize(layout->root, traceSizeEntryLimit))
        report->reclaimedBytes = static_cast<std::int64_t>(size->allocatedBytes);
    return std::move(*report);
}

} // namespace

void RemovalFlowModel::execute(std::shared_ptr<Run> run) {
    if (run->targets.empty()) { // every application was left out
        stage_ = std::move(run->cameFrom);
        return notify();
    }
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, run] {
            return carryOut(services, user, run->targets, run->mode);
        },
        [run](RemovalFlowModel& self, tl::expected<RemovalReport, Message> report) {
            if (!report) {
                self.stage_ = std::move(run->cameFrom);
                return self.fail(self.services_.texts.text(report.error()));
            }
            const auto manifest = readManifest(report->quarantineRoot, self.services_.files);
            self.lastManifest_ = manifest ? std::optional(*manifest) : std::nullopt;
            self.undoReport_.reset();
            self.enter(stage::Report{std::move(*report)});
        });
}

void RemovalFlowModel::undo(const Manifest& manifest, std::function<void()> done) {
    if (isUndoing_) return;
    isUndoing_ = true;
    notify();
    using Outcome = tl::expected<UndoReport, FileError>;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, manifest]() -> Outcome {
            const auto lock = lockTrash(user, services.files);
            if (!lock) return tl::unexpected(lock.error());
            return services.undo.undo(manifest);
        },
        [done = std::move(done)](RemovalFlowModel& self, Outcome outcome) {
            self.isUndoing_ = false;
            if (!outcome) return self.fail(self.services_.texts.text(failureKey(outcome.error().fault)));
            self.undoReport_ = std::move(*outcome);
            if (done) done();
            self.notify();
        });
}

void RemovalFlowModel::undoLast() {
    if (std::holds_alternative<stage::Report>(stage_) && lastManifest_) undo(*lastManifest_, {});
}

void RemovalFlowModel::undoRecovered() {
    if (recoveryNotice_) undo(recoveryNotice_->manifest, [this] { recoveryNotice_.reset(); });
}

void RemovalFlowModel::dismissRecoveryNotice() {
    recoveryNotice_.reset();
    notify();
}

} // namespace tidwen
