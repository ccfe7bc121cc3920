#pragma once

#include "cli/command.h"
#include "scan/scan_result.h"

#include <vector>

namespace tidwen {

struct ScannedApplications {
    std::vector<ScanResult> results; ///< in the order asked for
    bool someRefused = false;        ///< a reason was printed for each that is missing
};

/// Finds and scans the applications that the operands name.
ScannedApplications scanApplications(const CommandContext& context, Mac& mac);

} // namespace tidwen
