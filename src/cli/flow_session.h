#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/stop_token.h"
#include "cli/command.h"
#include "cli/end_signals.h"
#include "program/mac.h"
#include "program/session.h"
#include "quarantine/recovery.h"
#include "removal/flow_types.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"
#include "removal/target_intake.h"
#include "sweep/orphan_scanner.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What an identifier of no installed application means.
enum class GoneTargets {
    searched, ///< what that application left
    refused,
};

/// Runs the removal flow for the terminal: drives the window's model in the foreground through each step,
/// with progress on standard error.
class FlowSession {
  public:
    FlowSession(const CommandContext& context, Mac& mac);

    RemovalFlowModel& model() { return model_; }

    /// Deletes runs past the retention period set by the user, then recovers interrupted runs and returns
    /// these, newest first.
    std::vector<RecoveryNotice> start();
    /// How many `start` deleted, and why; nullopt for none.
    const std::optional<Message>& purged() { return session_.models().chores().purged(); }

    /// Recovers interrupted runs, or says why it was not begun. The first Ctrl-C stops it after the current
    /// quarantine folder.
    const tl::expected<RecoveryOutcome, Message>& recover();

    /// Finds and scans the applications that the words mean, and leaves the model in its review. False, with
    /// the reasons printed, if none could be accepted or Ctrl-C cancelled it.
    bool scan(const std::vector<std::string>& words, ProtectedTargets ofProtected = ProtectedTargets::refused,
              GoneTargets ofGone = GoneTargets::searched);
    /// Whether an application was refused, with its reason printed.
    bool someRefused() const { return someRefused_; }

    /// Searches for orphans and leaves the result in the model. False if Ctrl-C cancelled it.
    bool sweep();

    /// The same for a list without a selection, avoiding the model's copies. nullopt if Ctrl-C cancelled it.
    std::optional<OrphanScanResult> findOrphans();

    /// A signal ends the program at once again, as while a question is asked: nothing has begun.
    void letSignalsEnd() { signals_.reset(); }

    /// Removes the selection. An application that does not quit is left out, unless the user can be asked and
    /// wants to continue. Ctrl-C stops it after the current step, a second one ends the program. True when
    /// the model shows a report.
    bool remove();
    /// Whether an application was left out, with its name printed on standard error.
    bool someLeftOut() const { return someLeftOut_; }

  private:
    void awaitChores();
    void heedSignals();
    void stopAtSignal();
    bool isCalledOff();
    void reportRefusals();
    bool awaitScan();
    void showProgress();
    void awaitRemoval();
    void answer(const QuitPrompt& prompt);

    const CommandContext& context_;
    MainQueue main_;
    Session session_;
    bool someRefused_ = false;
    bool someLeftOut_ = false;
    RemovalFlowModel& model_;
    Subscription progress_, steps_;
    bool isCalledOff_ = false;
    StopSource sweepStop_;
    std::optional<EndSignals> signals_; ///< from the first search on, so that none ends the program unsaid
};

} // namespace tidwen
