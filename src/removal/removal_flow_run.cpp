// Part of RemovalFlowModel: quit prompts, the run and its undo.

#include "base/background_step.h"
#include "base/message.h"
#include "base/step_progress.h"
#include "base/uuid.h"
#include "platform/file_system.h"
#include "quarantine/trash_lock.h"
#include "quarantine/undo_service.h"
#include "removal/findings.h"
#include "removal/flow_types.h"
#include "removal/removal_choice.h"
#include "removal/removal_flow_model.h"
#include "removal/removal_phases.h"
#include "removal/removal_plan.h"
#include "removal/removal_refusal.h"
#include "removal/removal_report.h"
#include "removal/removal_run.h"
#include "removal/renewed_check.h"
#include "scan/matching/residue_scanner.h"
#include "scan/permissions/full_disk_access.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <tl/expected.hpp>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

/// A removal while its applications are asked to quit.
struct RemovalFlowModel::Run {
    RemovalChoice choice;                ///< without what was left out
    std::vector<GoingGroup> asked;       ///< as confirmed, in the order in which they are asked
    std::size_t next = 0;                ///< index of the first one not yet asked
    std::vector<RemovalTarget> targets;  ///< final, once every application has answered
    std::set<const FoundGroup*> running; ///< those that were running
    Stage cameFrom;
    FindInUse findInUse;              ///< of an offer
    std::unique_ptr<FolderLock> lock; ///< of the Trash
    StepControl control;

    /// Skips groups of which nothing is removed after another one was left out.
    const FoundGroup* nextToAsk() {
        while (next < asked.size()) {
            const auto* group = asked[next++].group;
            if (std::ranges::find(choice.going(), group, &GoingGroup::group) != choice.going().end())
                return group;
        }
        return nullptr;
    }

    /// Called when all answers are in.
    void settle() {
        targets = choice.targets();
        for (std::size_t i = 0; i < targets.size(); ++i)
            targets[i].isRunning = running.contains(choice.going()[i].group);
    }
};

namespace {

std::vector<AppTarget> targetsOf(const Findings& findings) {
    std::vector<AppTarget> targets;
    targets.reserve(findings.groups().size());
    for (const auto& group : findings.groups())
        targets.push_back(group.target);
    return targets;
}

} // namespace

RemovalFlowModel::Answer RemovalFlowModel::confirm() {
    if (!isChoosing()) return whyNot();
    if (isHome() && choice_.findings().groups().empty())
        return tl::unexpected(Message{"error.nothingToRemove"});
    problems_.clear();
    unmovableItems_.clear();
    if (const auto refusal = whyNothingIsChosen()) {
        unmovableItems_ = refusal->unmovableItems;
        return fail(refusal->reason);
    }
    auto run = std::make_shared<Run>();
    run->choice = choice_;
    run->asked = run->choice.going();
    run->targets = run->choice.targets();
    run->cameFrom = stage_;
    run->findInUse = findInUse_;
    run->control = work_.begin();
    run_ = run;
    phases.set({});
    enter(stage::Removing{choice_.subject()});
    beginUnlessRefused(run);
    return {};
}

std::optional<RemovalRefusal> RemovalFlowModel::whyNothingIsChosen() const {
    auto refusal = choice_.refusal();
    // Nothing that may be protected is selected; the unreadable list is then the reason.
    if (refusal && protectionProblem_) refusal->reason = *protectionProblem_;
    return refusal;
}

RefusalGrounds RemovalFlowModel::refusalGrounds() const {
    return {services_.files, user_, services_.rights, services_.readProtection()};
}

std::optional<RemovalRefusal> RemovalFlowModel::refusal() const {
    if (auto closed = whyNothingMoves(user_, services_.files)) return RemovalRefusal{std::move(*closed)};
    if (auto refusal = whyNothingIsChosen()) return refusal;
    return whyNotBegin(choice_.targets(), choice_.mode(), refusalGrounds());
}

/// Refusals come before the first application is asked to quit and before anything is created or locked.
void RemovalFlowModel::beginUnlessRefused(const std::shared_ptr<Run>& run) {
    using Outcome = tl::expected<std::unique_ptr<FolderLock>, RemovalRefusal>;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, run]() -> Outcome {
            const RefusalGrounds grounds{services.files, user, services.rights, services.readProtection()};
            if (auto refusal = whyNotBegin(run->targets, run->choice.mode(), grounds))
                return tl::unexpected(std::move(*refusal));
            return lockTrash(user, services.files).map_error([](Message why) {
                return RemovalRefusal{std::move(why)};
            });
        },
        [run](RemovalFlowModel& self, Outcome outcome) {
            if (!outcome) return self.goBack(*run, std::move(outcome.error()));
            run->lock = std::move(*outcome);
            self.quitNext(run);
        });
}

void RemovalFlowModel::goBack(Run& run, RemovalRefusal refusal) {
    unmovableItems_ = std::move(refusal.unmovableItems);
    goBack(run, std::move(refusal.reason));
}

void RemovalFlowModel::goBack(Run& run, std::optional<Message> error) {
    run.lock.reset();
    const auto kept = std::move(run_); // it may be the last reference
    work_.end();
    problems_.clear();
    if (error) problems_.push_back({.reason = std::move(*error)});
    stage_ = std::move(run.cameFrom);
    changed.emit(FlowChange::stage);
}

/// Returns to the previous stage if stopped before the first step.
bool RemovalFlowModel::goBackIfStopped(Run& run) {
    if (!run.control.isStopped()) return false;
    goBack(run, Message{"error.stoppedBeforeFirstStep"});
    return true;
}

void RemovalFlowModel::quitNext(std::shared_ptr<Run> run) {
    if (goBackIfStopped(*run)) return;
    const auto* group = run->nextToAsk();
    if (!group) return execute(std::move(run));
    inBackground(
        *this, alive_, services_.background, services_.main,
        [&running = services_.running, bundleID = group->target.bundleID] {
            const bool wasRunning = !bundleID.empty() && running.isRunning(bundleID);
            return std::pair(wasRunning, !wasRunning || running.quit(bundleID, quitWait));
        },
        [run, group](RemovalFlowModel& self, std::pair<bool, bool> outcome) {
            const auto [wasRunning, hasQuit] = outcome;
            if (wasRunning) run->running.insert(group);
            if (hasQuit) return self.quitNext(run);
            self.quitPromptContinuation_ = [&self, run, group](QuitPromptChoice choice) {
                if (choice == QuitPromptChoice::cancelApp) run->choice.leaveOut(*group);
                self.quitNext(run);
            };
            self.pendingQuitPrompt_ = QuitPrompt{Uuid::random(), group->target.name};
            self.changed.emit(FlowChange::prompt);
        });
}

void RemovalFlowModel::stop() {
    if (std::holds_alternative<stage::Scanning>(stage_)) return cancelScan();
    if (!run_ && !isUndoing_) return;
    work_.stop();
    if (!pendingQuitPrompt_) return;
    pendingQuitPrompt_.reset();
    quitPromptContinuation_ = nullptr;
    goBackIfStopped(*run_);
}

RemovalFlowModel::Answer RemovalFlowModel::answerQuitPrompt(QuitPromptChoice choice) {
    if (!pendingQuitPrompt_) return whyNot();
    pendingQuitPrompt_.reset();
    changed.emit(FlowChange::prompt);
    if (auto answer = std::exchange(quitPromptContinuation_, nullptr)) answer(choice);
    return {};
}

void RemovalFlowModel::execute(std::shared_ptr<Run> run) {
    if (run->choice.going().empty()) return goBack(*run, std::nullopt); // every application was left out
    run->settle();
    enter(stage::Removing{run->choice.subject()});
    auto onPlanned = [this, weak = std::weak_ptr(alive_), &main = services_.main](RemovalPhases planned) {
        main.post([this, weak, planned = std::move(planned)]() mutable {
            if (!weak.expired()) phases.set(std::move(planned));
        });
    };
    auto work = [services = services_, user = user_, run, onPlanned = std::move(onPlanned)] {
        // Together with those that were left out, as in the review: what these claim is settled there.
        const auto scanAgain = [&, scanner = std::shared_ptr<ResidueScanner>(),
                                together = targetsOf(run->choice.findings())](const auto& target) mutable {
            if (!scanner) scanner = services.makeScanner(reachFor(together));
            return scanner->scan(target, {}, together);
        };
        refuseWhatChanged(run->targets, run->choice.mode(), run->choice.subject().kind,
                          {services.files, user, services.rights, services.readProtection(), services.loader,
                           services.findReclaimed, scanAgain, run->findInUse});
        RemovalRun removal({services.files, services.executor, services.audit, services.clock}, user);
        auto report = removal.carryOut(run->choice, run->targets, run->control, onPlanned);
        run->lock.reset(); // before the report is shown, so that it can be undone at once
        return report;
    };
    inBackground(*this, alive_, services_.background, services_.main, std::move(work),
                 [run = std::move(run)](RemovalFlowModel& self, FileResult<RemovalReport> report) {
                     if (!report) return self.goBack(*run, describeNotBegun(report.error()));
                     if (report->isUntouched()) return void(self.goBackIfStopped(*run));
                     self.run_.reset();
                     self.work_.end();
                     self.undoReport_.reset();
                     self.forgetChoices();
                     self.enter(stage::Report{std::move(*report), run->choice.subject()});
                 });
}

RemovalFlowModel::Answer RemovalFlowModel::undoLast() {
    const auto* shown = std::get_if<stage::Report>(&stage_);
    if (!shown || isUndoing_) return whyNot();
    isUndoing_ = true;
    problems_.clear();
    const auto control = work_.begin();
    changed.emit(FlowChange::undo);
    inBackground(
        *this, alive_, services_.background, services_.main,
        [&service = services_.undo, root = shown->report.quarantineRoot, control] {
            return service.undoRun(root, {}, control);
        },
        [](RemovalFlowModel& self, tl::expected<UndoReport, Message> outcome) {
            self.isUndoing_ = false;
            self.work_.end();
            if (outcome)
                self.undoReport_ = std::move(*outcome);
            else
                self.problems_ = {{.reason = std::move(outcome.error())}};
            self.changed.emit(FlowChange::undo);
        });
    return {};
}

} // namespace tidwen
