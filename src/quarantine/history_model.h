#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/progress_tracker.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "platform/defaults.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
#include "quarantine/unfinished_run.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The list of past runs and the actions on them. Main thread only. One undo or deletion runs at a time, in
/// the background, holding the lock of the Trash.
class HistoryModel {
  public:
    struct Ports {
        FileSystem& files;
        UndoService& undo;
        QuarantinePurge& purge;
        const Defaults& settings;
        const Texts& texts;
        Executor& main;
        Executor& background;
    };

    /// Why nothing was done; no reason when the user dismissed the administrator's prompt.
    struct Refusal {
        std::optional<Message> reason;
    };
    /// Called on the main thread with the result of an action, before the list is reloaded.
    template<class Result>
    using Answer = std::function<void(const tl::expected<Result, Refusal>&)>;

    enum class Sizes { measured, leftOut };

    HistoryModel(Ports ports, UserEnvironment user);

    Property<std::vector<RemovalHistoryEntry>> entries; ///< newest first
    Property<std::vector<Path>> leftOut; ///< runs not read because the read budget was exhausted
    Property<std::vector<UnfinishedRun>> unfinishedRuns; ///< runs that are not in `entries`, by folder name
    Property<std::optional<Message>>
        unreadable; ///< why the Trash could not be read; nothing is known about it then
    /// Another process is working in the Trash. What looks interrupted may be its run, so `unfinishedRuns` is
    /// empty.
    Property<bool> isAnotherAtWork{false};
    Property<bool> isLoading{false};
    Property<std::optional<std::string>> busyEntryID; ///< see `id`; the Trash while several runs are deleted
    Property<std::optional<StepProgress>> progress;   ///< the current step of the action
    Property<std::optional<UndoReport>> lastUndo;
    Property<std::optional<Message>> error; ///< why the last undo or deletion was not done, or only in part
    /// `error` as text.
    std::optional<std::string> errorMessage() const {
        const auto& why = error.get();
        return why ? std::optional(ports_.texts.text(*why)) : std::nullopt;
    }

    /// Reloads the runs. Of several concurrent loads the last one started wins.
    void load(Sizes sizes = Sizes::measured, std::function<void()> done = {});

    /// Each action calls `answer` exactly once. While another one runs it is refused at once, and what the
    /// properties say of the other one stays. After a refusal the list stays as it is; otherwise it is
    /// reloaded.
    void undo(const RemovalHistoryEntry& entry, Answer<UndoReport> answer = {}) {
        undo(entry.root, std::move(answer));
    }
    /// `root` may be an interrupted run; `items` selects items of a run.
    void undo(const Path& root, Answer<UndoReport> answer = {}) { undo(root, {}, std::move(answer)); }
    void undo(const Path& root, const ItemChoice& items, Answer<UndoReport> answer = {});
    /// Refused while `whyNotRemove` gives a reason. Quarantine folders that are empty but for run documents
    /// are deleted too.
    void remove(const std::vector<RemovalHistoryEntry>& chosen, Answer<QuarantinePurge::Outcome> answer = {},
                QuarantinePurge::CutOffUndo cutOffUndo = QuarantinePurge::CutOffUndo::refuse);
    /// All that the user was asked about: more may have come since.
    void removeAll(const std::vector<RemovalHistoryEntry>& asked,
                   Answer<QuarantinePurge::Outcome> answer = {}) {
        remove(asked, std::move(answer), QuarantinePurge::CutOffUndo::keep);
    }

    /// Takes back what the last action came to: `lastUndo` and `error`. An action does so when it begins.
    void forgetOutcome();
    /// What runs, while `busyEntryID` is set: a deletion, or an undo.
    bool isDeleting() const { return isDeleting_; }
    /// Stops an undo or a deletion after the current step.
    void stop() { work_.stop(); }

    /// Why nothing is deleted permanently: while the settings are unreadable, the retention period the user
    /// has set is unknown.
    std::optional<Message> whyNotRemove() const { return ports_.settings.problem(); }

    static std::string id(const RemovalHistoryEntry& entry) { return entry.root.string(); }

  private:
    template<class Result, class Action>
    void run(std::string busyID, Action action, Answer<Result> answer);
    void publish(const UndoReport& report) { lastUndo.set(report); }
    void publish(const QuarantinePurge::Outcome& outcome);
    void publish(PastRuns runs, bool isAnotherAtWork);

    Ports ports_;
    UserEnvironment user_;
    ProgressTracker work_;
    bool isDeleting_ = false;
    int loadsStarted_ = 0;
    std::shared_ptr<bool> alive_ =
        std::make_shared<bool>(true); ///< checked by background work when it finishes
};

} // namespace tidwen
