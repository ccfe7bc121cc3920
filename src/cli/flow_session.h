#pragma once

#include "cli/command.h"
#include "program/session.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The removal flow as the terminal drives it: the model that a window would show, pumped in the foreground
/// to the end of each of its steps, with progress on standard error.
class FlowSession {
  public:
    FlowSession(const CommandContext& context, Mac& mac);

    RemovalFlowModel& model() { return model_; }

    /// What a program does that starts and stays: deletes runs that are past the retention which the user
    /// set, finishes the book-keeping of runs that were cut off, and gives these, newest first.
    std::vector<RecoveryNotice> start();

    /// Finds and scans the applications that the words mean, and leaves the model in its review. False when
    /// none could be taken or Ctrl-C called it off; the reasons are printed.
    bool scan(const std::vector<std::string>& words,
              ProtectedTargets ofProtected = ProtectedTargets::refused);
    /// Some application was refused, with its reason printed.
    bool someRefused() const { return someRefused_; }

    /// Looks for orphans and leaves the model with what it found. False when Ctrl-C called it off.
    bool sweep();

    /// The same for a list that nothing is chosen from: the model would hold several copies of it. Nothing
    /// when Ctrl-C called it off.
    std::optional<OrphanScanResult> findOrphans();

    /// Removes what is chosen. Who still runs and does not quit is left out, unless the user, where one can
    /// be asked, wants to go on. Ctrl-C ends it after the step at hand, a second one ends the program. True
    /// when the model shows a report.
    bool remove();
    /// Some application was left out, and was named on standard error.
    bool someLeftOut() const { return someLeftOut_; }

  private:
    void reportRefusals();
    bool awaitScan();
    void showProgress();
    void awaitRemoval();
    void stopRemoval();
    void answer(const QuitPrompt& prompt);

    const CommandContext& context_;
    MainQueue main_;
    Session session_;
    bool someRefused_ = false;
    bool someLeftOut_ = false;
    RemovalFlowModel& model_;
    Subscription progress_, steps_;
};

} // namespace tidwen
