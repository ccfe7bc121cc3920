#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_phases.h"
#include "removal/removal_report.h"

#include <optional>
#include <set>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Executes one plan: journal, user-level operations, one administrator batch, manifest, removal of the
/// journal. Decides nothing and keeps no state between calls.
class RemovalExecutor {
  public:
    struct Ports {
        FileSystem& files;
        PrivilegedRunner& userRunner;
        PrivilegedRunner& privilegedRunner;
        Log& log;
    };

    explicit RemovalExecutor(Ports ports) : ports_(ports) {}

    /// Steps with a refusal are not run and fail with it. `layout.root` must exist. Fails only if the
    /// journal, with the reserved space for the manifest, cannot be written; then nothing was changed. The
    /// journal stays instead of a manifest if the manifest cannot be written, a move was left unfinished, or
    /// the administrator's commands timed out: the run can then be recovered, or undone by its journal. When
    /// stopped, it ends after the current step as after failures: steps that were not begun have
    /// "failure.stopped" as their reason. `emptyResets`: the traces of permission resets that have nothing to
    /// reset; the manifest does not record them as irreversible.
    FileResult<RemovalReport> execute(const std::vector<RemovalOperation>& plan,
                                      const QuarantineLayout& layout, const std::vector<AppRecord>& apps,
                                      RemovalMode mode, Timestamp date, const StepControl& control = {},
                                      const std::set<Uuid>& emptyResets = {});

    /// What `execute` will report of the plan.
    RemovalPhases phases(const std::vector<RemovalOperation>& plan) const;

  private:
    std::optional<Message> conclude(const RemovalJournal& journal, const std::set<Path>& earlierRests,
                                    RemovalReport& report) const;

    Ports ports_;
};

} // namespace tidwen
