#pragma once

#include "base/log.h"
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

    /// `layout.root` must exist. Fails only when the journal cannot be written; then nothing was touched. A
    /// manifest that cannot be written leaves the journal in place, so the run can still be recovered.
    FileResult<RemovalReport> execute(const std::vector<RemovalOperation>& plan,
                                      const QuarantineLayout& layout, const std::vector<AppRecord>& apps,
                                      RemovalMode mode, Timestamp date);

  private:
    Ports ports_;
};

} // namespace tidwen
