#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/progress_tracker.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/undo_service.h"
#include "removal/findings.h"
#include "removal/flow_types.h"
#include "removal/removal_choice.h"
#include "removal/removal_executor.h"
#include "removal/removal_phases.h"
#include "removal/removal_refusal.h"
#include "removal/removal_subject.h"
#include "removal/renewed_check.h"
#include "removal/target_intake.h"
#include "removal/unmovable_items.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/removability.h"
#include "settings/app_preferences.h"
#include "sweep/leftover_filter.h"
#include "sweep/leftover_tree.h"
#include "sweep/orphan_scanner.h"
#include "sweep/sweep_state.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The state machine of the main window: from chosen bundles through scan, review and confirmation to the
/// report and its undo. Main thread only; slow work runs in the background and returns through the main
/// executor.
///
///   stage        event                                  next stage
///   ---------    -----------------------------------    --------------------------------------------
///   home (*)     loadTargets                            scanning
///   home         scanOrphans                            scanning
///   home         show                                   another home stage
///   home         offer (installers, startup items)      the same; what is offered can be confirmed
///   scanning     no bundle can be taken                 the stage it came from, with an error
///   scanning     all applications are scanned           review
///   scanning     the sweep has ended                    orphans
///   scanning     cancelScan                             the home stage it came from
///   review       loadTargets                            scanning; then as chosen before where an application
///                                                       is searched again
///   review,      confirm, something is selected         removing; each application that runs is asked to
///   orphans,                                            quit, and the user about each that does not
///   an offer     confirm, nothing is selected           the same, with an error
///   review,      close                                  the home stage it came from
///   orphans
///   removing     run ended                              report
///   removing     run refused or cannot be set up        the stage it came from, with an error
///   removing     every application left out             the stage it came from
///   removing     stop, before the first step            the stage it came from, with an error
///   removing     stop, later                            report
///   report       close                                  the home stage it came from; onReportDismissed
///
///   (*) home: idle, startupItems, installers, history. Any other event changes nothing and is answered with
///   the reason.
///
/// Before its first step a removal looks again at what was confirmed (`refuseWhatChanged`); what it refuses
/// stays and is in the report. It holds the lock of the Trash from before the first application is asked to
/// quit until its report.
class RemovalFlowModel {
  public:
    struct Services {
        FileSystem& files;
        const AppTargetLoader& loader;
        /// A scanner that knows the currently installed applications; called in the background. `further`:
        /// what is gone is looked for, and whatever an installed bundle contains may own it.
        std::function<std::unique_ptr<ResidueScanner>(BundleReach)> makeScanner;
        /// A sweep with the currently installed applications; called in the background.
        std::function<OrphanScanResult(const StopToken&, const OrphanScanner::OnFound&, const OnStep&)>
            sweepOrphans;
        /// Which finds have an owner now; called in the background.
        FindReclaimed findReclaimed;
        RunningApplications& running;
        RemovalExecutor& executor;
        UndoService& undo;
        MoveRights rights; ///< whether an administrator prompt is possible
        const PermissionAudit& audit;
        /// The protected applications as stored; called on any thread.
        std::function<Protection()> readProtection;
        const AppPreferences& preferences;
        const Texts& texts;
        const Clock& clock;
        Log& log;
        Executor& main;
        Executor& background; ///< may have several threads
        Executor& treeQueue;  ///< serial
    };

    /// Why the flow did not do what it was asked for, because of its stage or of what was passed.
    using Answer = tl::expected<void, Message>;

    /// How long an application may take to quit before the user is asked.
    static constexpr std::chrono::seconds quitWait{10};

    RemovalFlowModel(Services services, UserEnvironment user);
    ~RemovalFlowModel();
    RemovalFlowModel(const RemovalFlowModel&) = delete;
    RemovalFlowModel& operator=(const RemovalFlowModel&) = delete;

    /// Emitted after every change of the accessors below.
    Signal<FlowChange> changed;
    /// The current step of the running scan, sweep, removal or undo; nothing before the first one, or when
    /// none is running. Not announced by `changed`.
    Property<std::optional<StepProgress>> progress;
    /// What the running removal consists of; empty until that is planned.
    Property<RemovalPhases> phases;

    const Stage& stage() const { return stage_; }
    /// Why the last request was not done, or only in part.
    const std::vector<Problem>& problems() const { return problems_; }
    /// `problems` as text, one line each; absent when there are none.
    std::optional<std::string> errorMessage() const;
    /// The applications that the last `loadTargets` refused because they are protected.
    const std::vector<AppTarget>& protectedTargets() const { return protectedTargets_; }
    /// When what is removed now is deleted permanently, by the user's settings; nullopt: never by itself.
    std::optional<Message> retention() const;
    const std::optional<UndoReport>& undoReport() const { return undoReport_; }
    bool isUndoing() const { return isUndoing_; }
    /// Why it is unknown which of the applications of the review are protected; none of them goes then.
    const std::optional<Message>& protectionProblem() const { return protectionProblem_; }
    const std::optional<QuitPrompt>& pendingQuitPrompt() const { return pendingQuitPrompt_; }
    /// The findings and the selection in the review, after a sweep and of an offer; empty in every other
    /// stage. While a removal runs, what it was started with.
    const RemovalChoice& choice() const { return choice_; }
    /// Why `confirm` would not begin. Reads the disk; call it only before a question or a preview.
    std::optional<RemovalRefusal> refusal() const;
    /// The items for which the last removal lacked the permissions to begin.
    const std::vector<Path>& unmovableItems() const { return unmovableItems_; }
    const std::map<std::string, LeftoverTree>& reviewTrees() const { return reviewTrees_; }
    const LeftoverFilter& reviewFilter() const { return reviewFilter_; }
    SweepState& sweep() { return sweep_; } ///< including the filter of its screen
    /// Whether `loadTargets` would accept applications now.
    bool takesTargets() const;
    /// Sorts and names again in the current language.
    void arrange();

    /// Protected applications that are `shown` can be inspected but not removed.
    /// `gone`: applications without a bundle, whose leftovers are scanned for; nothing found is a problem.
    Answer loadTargets(const std::vector<Path>& bundles,
                       ProtectedTargets ofProtected = ProtectedTargets::refused,
                       const std::vector<GoneApplication>& gone = {});
    Answer scanOrphans();
    void cancelScan();
    /// Stops what is running: cancels a scan or sweep; ends a removal or undo after the current step, with a
    /// report as after failures. A removal without a begun step returns to its previous stage, and a pending
    /// quit prompt is withdrawn. An administrator batch completes first.
    void stop();
    /// One of the home stages.
    Answer show(Stage home);
    /// Leaves review, orphans or report; not before an undo has ended.
    Answer close();
    std::function<void()> onReportDismissed;

    /// Offers the selection of the installers' or the startup items' screen, all of it selected. Another home
    /// stage, a scan or a sweep withdraws the offer. `findInUse` is asked before the first step; it must live
    /// as long as this model.
    Answer offer(const std::string& name, std::vector<Trace> traces, FindInUse findInUse = {});

    // Change `choice`, see there; refused while there is nothing to choose from.
    Answer setSelected(const std::vector<Uuid>& ids, bool selected);
    Answer select(const std::vector<Uuid>& ids, const std::vector<Uuid>& named = {});
    Answer selectDefaults();
    Answer setMode(RemovalMode mode);

    void setReviewFilter(LeftoverFilter filter);

    Answer confirm();
    Answer answerQuitPrompt(QuitPromptChoice choice);

    /// Undoes the run of the report.
    Answer undoLast();

  private:
    struct Run;      ///< a removal in preparation
    struct Reviewed; ///< the scanned applications, prepared for their review

    bool isHome() const;
    bool isChoosing() const;
    void enter(Stage next);
    void forgetChoices();
    Answer fail(Message reason);
    Answer whyNot() const;

    void scan(std::vector<AppTarget> targets, std::vector<GoneApplication> gone);
    void review(Reviewed reviewed, const RemovalChoice& earlier);
    void showOrphans(std::shared_ptr<const OrphanScanResult> result, Findings findings);
    void buildReviewTrees();

    void choose(Findings findings, RemovalSubject::Kind kind);
    std::optional<RemovalRefusal> whyNothingIsChosen() const;
    RefusalGrounds refusalGrounds() const;
    void beginUnlessRefused(const std::shared_ptr<Run>& run);
    void quitNext(std::shared_ptr<Run> run);
    void execute(std::shared_ptr<Run> run);
    bool goBackIfStopped(Run& run);
    void goBack(Run& run, std::optional<Message> error);
    void goBack(Run& run, RemovalRefusal refusal);

    Services services_;
    UserEnvironment user_;
    Stage stage_ = stage::Idle{};
    Stage home_ = stage::Idle{}; ///< the home stage where the flow started
    std::vector<Problem> problems_;
    std::vector<AppTarget> protectedTargets_;
    std::optional<UndoReport> undoReport_;
    bool isUndoing_ = false;
    std::optional<QuitPrompt> pendingQuitPrompt_;
    std::function<void(QuitPromptChoice)> quitPromptContinuation_;
    RemovalChoice choice_;
    FindInUse findInUse_;                                                    ///< of the offer
    std::map<std::string, std::shared_ptr<const LeftoverList>> reviewLists_; ///< by bundle identifier
    std::map<std::string, LeftoverTree> reviewTrees_;
    LeftoverFilter reviewFilter_;
    std::optional<Message> protectionProblem_; ///< why the review selects nothing
    SweepState sweep_;
    ProgressTracker work_;     ///< the running scan, removal or undo
    std::shared_ptr<Run> run_; ///< from the confirmation to the report
    std::vector<Path> unmovableItems_;
    std::shared_ptr<bool> alive_ =
        std::make_shared<bool>(true); ///< checked by background work when it finishes
};

} // namespace tidwen
