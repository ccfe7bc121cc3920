#pragma once

#include "base/executor.h"
#include "base/followed_work.h"
#include "base/observable.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/recovery.h"
#include "quarantine/undo_service.h"
#include "settings/app_preferences.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// A run was cut off, and this is what of it lies in quarantine.
struct RecoveryNotice {
    Manifest manifest;
    /// The old places of items that could not be brought to either of their two places; the next start tries
    /// again.
    std::vector<std::string> unsettled = {};
};

/// What a program does once that starts and stays: the automatic purge, then recovery of interrupted runs, so
/// that nothing which this start recovers is purged by its age at once. Each recovered run is a notice, which
/// the user dismisses or undoes. Belongs to the main thread; its work runs in the background.
class StartupChores {
  public:
    struct Services {
        FileSystem& files;
        UndoService& undo;
        QuarantinePurge& purge;
        const AppPreferences& preferences;
        const Texts& texts;
        const Clock& clock;
        Log& log;
        Executor& main;
        Executor& background;
    };

    StartupChores(Services services, UserEnvironment user);

    /// Told after every change of what the accessors below answer.
    Signal<> changed;
    /// The step at hand of the purge, the recovery or an undo that runs. Not told through `changed`.
    Property<std::optional<StepProgress>> progress;

    /// Once; what follows does nothing.
    void run();
    bool isDone() const { return isDone_; }

    /// Newest first; the next one becomes the notice when one is dismissed or undone.
    const std::vector<RecoveryNotice>& recoveryNotices() const { return recoveryNotices_; }
    std::optional<RecoveryNotice> recoveryNotice() const {
        return recoveryNotices_.empty() ? std::nullopt : std::optional(recoveryNotices_.front());
    }
    void dismissRecoveryNotice();
    /// The run of the notice was undone elsewhere.
    void dismissRecoveryNotice(const Path& root);

    /// Undoes the run of the notice; the notice goes with it.
    void undoRecovered();
    bool isUndoing() const { return isUndoing_; }
    /// Ends what runs after the step at hand; what is left waits for the next start, or another undo.
    void stop() { work_.stop(); }
    const std::optional<UndoReport>& undoReport() const { return undoReport_; }
    /// Why the last undo was not begun.
    const std::optional<Message>& error() const { return error_; }
    std::optional<std::string> errorMessage() const {
        return error_ ? std::optional(services_.texts.text(*error_)) : std::nullopt;
    }

  private:
    void show(RecoveryOutcome outcome);

    Services services_;
    UserEnvironment user_;
    FollowedWork work_;
    bool hasStarted_ = false;
    bool isDone_ = false;
    std::vector<RecoveryNotice> recoveryNotices_;
    bool isUndoing_ = false;
    std::optional<UndoReport> undoReport_;
    std::optional<Message> error_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
