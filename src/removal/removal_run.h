#pragma once

#include "base/timestamp.h"
#include "removal/removal_choice.h"
#include "removal/removal_executor.h"
#include "scan/permissions/permission_audit.h"

#include <vector>

namespace tidwen {

/// One removal from its quarantine folder to its verified report, with all that the report says of what was
/// chosen. The caller holds the lock of the Trash. Blocks. Nothing was touched when it gives an error.
class RemovalRun {
  public:
    struct Ports {
        FileSystem& files;
        RemovalExecutor& executor;
        const PermissionAudit& audit;
        const Texts& texts;
        const Clock& clock;
    };

    RemovalRun(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

    /// `targets`: those of the choice. Told to stop before the first step, it leaves no folder behind
    /// (`RemovalReport::isUntouched`).
    FileResult<RemovalReport> carryOut(const RemovalChoice& choice, const std::vector<RemovalTarget>& targets,
                                       const StepControl& control = {});

  private:
    void dropRecord(RemovalReport& report) const;
    std::vector<Remainder> remaindersOf(const RemovalChoice& choice, const RemovalReport& report) const;

    Ports ports_;
    UserEnvironment user_;
};

} // namespace tidwen
