#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/progress_tracker.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/recovery.h"
#include "quarantine/undo_service.h"
#include "settings/app_preferences.h"

#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// A recovered run, with what of it is in quarantine.
struct RecoveryNotice {
    Manifest manifest;
    /// Old paths of items at neither of their two places; the next start tries again.
    std::vector<std::string> unsettled = {};
};

/// What a change of `StartupChores` is about.
enum class ChoresChange {
    recovery, ///< it has ended; `recoveryNotices` are those of what it found, `purged` tells of the purge
    notices,  ///< some were dismissed
    undo,     ///< the undo of a notice's run, and that notice
};

/// What a long-running program does once at its start: the automatic purge, then recovery of interrupted
/// runs, in this order so that a run just recovered is not purged immediately because of its age. Each
/// recovered run is a notice, which the user dismisses or undoes. Main thread only; the work runs in the
/// background.
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

    /// Emitted after every change of the accessors below.
    Signal<ChoresChange> changed;
    /// The current step of the running purge, recovery or undo. Not announced by `changed`.
    Property<std::optional<StepProgress>> progress;

    /// Runs once; further calls of this or `recover` do nothing.
    void run();
    /// The recovery alone, because the user asked for it.
    void recover();
    /// What the recovery came to, or why it was not begun; nullopt until then.
    const std::optional<tl::expected<RecoveryOutcome, Message>>& recovery() const { return recovery_; }
    bool isDone() const { return recovery_.has_value(); }
    /// How many removals the purge deleted permanently, and why; nullopt for none, or once dismissed.
    const std::optional<Message>& purged() const { return purged_; }
    void dismissPurged();

    /// Newest first. When one is dismissed or undone the next one is shown.
    const std::vector<RecoveryNotice>& recoveryNotices() const { return recoveryNotices_; }
    std::optional<RecoveryNotice> recoveryNotice() const {
        return recoveryNotices_.empty() ? std::nullopt : std::optional(recoveryNotices_.front());
    }
    void dismissRecoveryNotice();
    /// Also what the last undo came to.
    void forgetUndo();
    /// For a run that was undone elsewhere.
    void dismissRecoveryNotice(const Path& root);

    /// Undoes the run of the notice. Dismisses it unless something of the run is still in quarantine.
    void undoRecovered();
    bool isUndoing() const { return isUndoing_; }
    /// Stops after the current step; the rest waits for the next start, or another undo.
    void stop() { work_.stop(); }
    const std::optional<UndoReport>& undoReport() const { return undoReport_; }
    /// The applications of the run that `undoReport` or `error` is about.
    const std::vector<AppRecord>& undoneApps() const { return undoneApps_; }
    /// Why the last undo was not begun.
    const std::optional<Message>& error() const { return error_; }
    std::optional<std::string> errorMessage() const {
        return error_ ? std::optional(services_.texts.text(*error_)) : std::nullopt;
    }

  private:
    enum class Purge { expired, nothing };
    void start(Purge purge);
    void show(const RecoveryOutcome& outcome);

    Services services_;
    UserEnvironment user_;
    ProgressTracker work_;
    bool hasStarted_ = false;
    std::optional<tl::expected<RecoveryOutcome, Message>> recovery_;
    std::optional<Message> purged_;
    std::vector<RecoveryNotice> recoveryNotices_;
    bool isUndoing_ = false;
    std::optional<UndoReport> undoReport_;
    std::optional<Message> error_;
    std::vector<AppRecord> undoneApps_;
    std::shared_ptr<bool> alive_ =
        std::make_shared<bool>(true); ///< checked by background work when it finishes
};

} // namespace tidwen
