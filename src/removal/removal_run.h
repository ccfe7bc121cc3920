#pragma once

#include "base/step_progress.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "removal/chosen_items.h"
#include "removal/removal_choice.h"
#include "removal/removal_executor.h"
#include "removal/removal_phases.h"
#include "removal/removal_plan.h"
#include "removal/removal_report.h"
#include "scan/permissions/permission_audit.h"

#include <functional>
#include <vector>

namespace tidwen {

/// One removal, from its quarantine folder to the verified report about the whole selection. The caller holds
/// the lock of the Trash. Blocks. After an error nothing was changed.
class RemovalRun {
  public:
    struct Ports {
        FileSystem& files;
        RemovalExecutor& executor;
        const PermissionAudit& audit;
        const Clock& clock;
    };

    RemovalRun(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

    /// `targets`: those of the choice. When stopped before the first step, it leaves no folder behind
    /// (`RemovalReport::isUntouched`). `onPlanned` is told what will be done before the first step.
    FileResult<RemovalReport> carryOut(const RemovalChoice& choice, const std::vector<RemovalTarget>& targets,
                                       const StepControl& control = {},
                                       const std::function<void(RemovalPhases)>& onPlanned = {});

  private:
    void dropRecord(RemovalReport& report) const;
    std::vector<Remainder> remaindersOf(const RemovalChoice& choice, const RemovalReport& report) const;

    Ports ports_;
    UserEnvironment user_;
};

} // namespace tidwen
