#pragma once

#include "base/log.h"
#include "base/step_progress.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_report.h"

#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Carries out one plan: journal, user-level operations, one administrator batch, manifest, journal dropped.
/// Decides nothing and keeps no state between calls.
class RemovalExecutor {
  public:
    struct Ports {
        FileSystem& files;
        PrivilegedRunner& userRunner;
        PrivilegedRunner& privilegedRunner;
        Log& log;
    };

    explicit RemovalExecutor(Ports ports) : ports_(ports) {}

    /// `layout.root` must exist. Fails only when the journal cannot be written, with the space for the
    /// manifest beside it; then nothing was touched. The journal stays in place of a manifest when that
    /// cannot be written, when a move was left unfinished, and when the administrator's commands overran
    /// their time: then the run can be recovered, and undone by its journal.
    /// Told to stop, it ends after the step at hand as after failures: the steps that were not begun have
    /// "failure.stopped" as their reason.
    FileResult<RemovalReport> execute(const std::vector<RemovalOperation>& plan,
                                      const QuarantineLayout& layout, const std::vector<AppRecord>& apps,
                                      RemovalMode mode, Timestamp date, const StepControl& control = {});

  private:
    std::optional<Message> conclude(const RemovalJournal& journal, RemovalReport& report) const;

    Ports ports_;
};

} // namespace tidwen
