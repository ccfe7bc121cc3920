// The removal itself: the quit prompts, the run, and its undo.

#include "base/background_step.h"
#include "quarantine/trash_lock.h"
#include "removal/chosen_items.h"
#include "removal/removal_aftermath.h"
#include "removal/removal_flow_model.h"
#include "removal/removal_verification.h"
#include "removal/staying_applications.h"

#include <algorithm>

namespace tidwen {

/// A removal while its applications are asked to quit.
struct RemovalFlowModel::Run {
    std::vector<ScanResult> found;      ///< what they were chosen from
    std::vector<RemovalTarget> targets; ///< those that take part
    std::size_t next = 0;               ///< the first one that was not asked yet
    std::vector<Path> skippedNames;
    Unseen unseen;
    RemovalMode mode = RemovalMode::uninstall;
    RemovalSubject subject = RemovalSubject::applications;
    Stage cameFrom;
    std::unique_ptr<FolderLock> lock; ///< of the Trash

    /// The application that was asked last stays, and with it what it claims of the others' items.
    void leaveOutNext() {
        const auto place = targets[next].target.bundleURL;
        targets.erase(targets.begin() + static_cast<std::ptrdiff_t>(next));
        if (subject != RemovalSubject::applications) return; // leftovers were not scanned as anybody's
        std::vector<ScanResult> staying;
        std::ranges::copy_if(found, std::back_inserter(staying),
                             [&](const ScanResult& result) { return result.target.bundleURL == place; });
        leaveToThoseThatStay(staying, targets);
    }
};

void RemovalFlowModel::confirm() {
    const bool isOffer = isHome() && offer_;
    if (!isOffer && !std::holds_alternative<stage::Review>(stage_)
        && !std::holds_alternative<stage::Orphans>(stage_))
        return;
    errorMessage_.reset();
    auto targets = chosenTargets();
    unmovableItems_.clear();
    if (auto refusal = whyNothingIsChosen(targets)) {
        unmovableItems_ = std::move(refusal->unmovableItems);
        return fail(services_.texts.text(refusal->reason));
    }
    reportSubject_ = subject();
    auto run = std::make_shared<Run>();
    run->subject = subjectKind();
    run->found = found();
    run->targets = std::move(targets);
    run->skippedNames = skippedNames();
    run->unseen = unseen();
    run->mode = mode_;
    run->cameFrom = stage_;
    enter(stage::Removing{});
    beginUnlessRefused(run);
}

namespace {

RefusalGrounds groundsOf(const RemovalFlowModel::Services& services, const UserEnvironment& user) {
    return {services.files, user, services.rights, services.protectedApps, services.texts};
}

} // namespace

std::optional<RemovalRefusal>
RemovalFlowModel::whyNothingIsChosen(const std::vector<RemovalTarget>& targets) const {
    if (refusedByDefault_ && mode_ == RemovalMode::uninstall) return refusedByDefault_;
    if (targets.empty()) return RemovalRefusal{{"error.nothingToRemove"}};
    return std::nullopt;
}

std::optional<RemovalRefusal> RemovalFlowModel::refusal() const {
    const auto targets = chosenTargets();
    if (auto refusal = whyNothingIsChosen(targets)) return refusal;
    return whyNotBegin(targets, mode_, groundsOf(services_, user_));
}

/// Refusals come before the first application is asked to quit and before anything is made or locked.
void RemovalFlowModel::beginUnlessRefused(const std::shared_ptr<Run>& run) {
    using Outcome = tl::expected<FileResult<std::unique_ptr<FolderLock>>, RemovalRefusal>;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, run]() -> Outcome {
            if (auto refusal = whyNotBegin(run->targets, run->mode, groundsOf(services, user)))
                return tl::unexpected(std::move(*refusal));
            return lockTrash(user, services.files);
        },
        [run](RemovalFlowModel& self, Outcome outcome) {
            if (!outcome) return self.goBack(*run, std::move(outcome.error()));
            auto& lock = *outcome;
            if (!lock) return self.goBack(*run, self.wordsOf(lock.error()));
            run->lock = std::move(*lock);
            self.quitNext(run);
        });
}

void RemovalFlowModel::goBack(Run& run, RemovalRefusal refusal) {
    unmovableItems_ = std::move(refusal.unmovableItems);
    goBack(run, services_.texts.text(refusal.reason));
}

void RemovalFlowModel::goBack(Run& run, std::optional<std::string> error) {
    run.lock.reset();
    errorMessage_ = std::move(error);
    stage_ = std::move(run.cameFrom);
    notify();
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
                    run->leaveOutNext();
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

/// A run of which nothing could be put back needs no folder once it is over, and no place in the history.
void dropRecord(RemovalReport& report, FileSystem& files) {
    if (report.manifestFailure || !files.removeFile(report.manifestURL)) return;
    if (!files.removeEmptyDirectory(report.quarantineRoot)) return;
    report.quarantineRoot = report.manifestURL = Path();
}

/// The run from its folder to its verified report. Nothing was touched when it gives an error instead.
FileResult<RemovalReport> carryOut(const RemovalFlowModel::Services& services, const UserEnvironment& user,
                                   const std::vector<RemovalTarget>& targets, RemovalMode mode) {
    const auto date = services.clock.now();
    std::vector<AppRecord> apps;
    apps.reserve(targets.size());
    for (const auto& target : targets)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = createQuarantineFolder(apps, date, user, services.files);
    if (!layout) return tl::unexpected(layout.error());
    const auto plan = buildRemovalPlan(targets, *layout, mode, services.texts);
    auto links = linksToApplications(targets, services.files, user);
    auto report = services.executor.execute(plan, *layout, apps, mode, date);
    if (!report) return report;
    if (manifestEntries(plan).empty()) dropRecord(*report, services.files);
    report->verification = verifyRemoval(targets, services.audit);
    report->reclaimedBytes = movedBytes(*report, services.files);
    report->emptiedFolders = emptiedFolders(targets, services.files, user);
    std::erase_if(links, [&](const Path& link) { return services.files.resolve(link).has_value(); });
    report->deadLinks = std::move(links);
    return report;
}

/// What stays after the run, and whether a later search would find it.
std::vector<Remainder> remaindersAfter(const std::vector<ScanResult>& found,
                                       const std::vector<RemovalTarget>& taken, RemovalMode mode,
                                       const FileSystem& files) {
    auto left = remainders(found, taken, mode);
    for (auto& each : left) {
        const bool isApplication = !each.target.bundleURL.isRoot();
        // Receipts alone are no evidence of an application.
        each.needsUndo = isApplication ? !files.exists(each.target.bundleURL)
                                       : std::ranges::all_of(each.traces, [](const Trace& trace) {
                                             return trace.category == TraceCategory::receipts;
                                         });
    }
    return left;
}

} // namespace

void RemovalFlowModel::execute(std::shared_ptr<Run> run) {
    std::erase_if(run->targets, [](const RemovalTarget& target) { return target.traces.empty(); });
    if (run->targets.empty()) return goBack(*run, std::nullopt); // every application was left out
    reportSubject_ = subjectText(run->subject, run->mode, run->targets, services_.texts);
    auto work = [services = services_, user = user_, run] {
        auto report = carryOut(services, user, run->targets, run->mode);
        if (report) {
            report->skippedNames = std::move(run->skippedNames);
            report->unseen = std::move(run->unseen);
            report->left = remaindersAfter(run->found, run->targets, run->mode, services.files);
        }
        run->lock.reset(); // before the report is seen, so that it can be undone at once
        return report;
    };
    inBackground(*this, alive_, services_.background, services_.main, std::move(work),
                 [run = std::move(run)](RemovalFlowModel& self, FileResult<RemovalReport> report) {
                     if (!report) return self.goBack(*run, self.wordsOf(report.error()));
                     self.undoReport_.reset();
                     self.offer_.reset();
                     self.enter(stage::Report{std::move(*report)});
                 });
}

void RemovalFlowModel::undo(const Path& root) {
    if (isUndoing_) return;
    isUndoing_ = true;
    errorMessage_.reset();
    notify();
    using Outcome = tl::expected<UndoReport, Message>;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [&service = services_.undo, root] { return service.undoRun(root); },
        [root](RemovalFlowModel& self, Outcome outcome) {
            self.isUndoing_ = false;
            if (!outcome) return self.fail(self.services_.texts.text(outcome.error()));
            self.undoReport_ = std::move(*outcome);
            std::erase_if(self.recoveryNotices_,
                          [&](const auto& each) { return each.manifest.quarantineRoot == root; });
            self.notify();
        });
}

void RemovalFlowModel::undoLast() {
    if (const auto* shown = std::get_if<stage::Report>(&stage_)) undo(shown->report.quarantineRoot);
}

void RemovalFlowModel::undoRecovered() {
    if (!recoveryNotices_.empty()) undo(recoveryNotices_.front().manifest.quarantineRoot);
}

void RemovalFlowModel::dismissRecoveryNotice() {
    if (!recoveryNotices_.empty()) recoveryNotices_.erase(recoveryNotices_.begin());
    notify();
}

} // namespace tidwen
