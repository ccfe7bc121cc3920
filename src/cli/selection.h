#pragma once

#include "base/message.h"
#include "cli/host_paths.h"
#include "removal/removal_plan.h"
#include "scan/scan_result.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Which of the found traces are to be taken.
struct SelectionRequest {
    RemovalMode mode = RemovalMode::uninstall;
    std::vector<std::string> selectors = {};    ///< identifiers, paths or display names of single traces
    std::optional<std::set<TraceRisk>> tiers{}; ///< in place of what is taken without further choice
};

/// "safe,review" → the tiers; the reason names the word that is none.
tl::expected<std::set<TraceRisk>, Message> parseTiers(const std::vector<std::string>& words);

/// True when the mode leaves this trace where it is: a reset keeps the application and its receipts.
bool staysInMode(const Trace& trace, RemovalMode mode);

/// The chosen traces by application; applications without one are left out. An item that two applications
/// share, or that lies in another that is taken, is taken once. A selector is refused when it names nothing
/// that was found, or something that cannot be taken; several of them at once may be joined by commas.
tl::expected<std::vector<RemovalTarget>, Message> chooseTraces(const std::vector<ScanResult>& results,
                                                               const SelectionRequest& request,
                                                               const HostPaths& hostPaths);

/// What was found and is not among the chosen, nor goes along with them or is meant to stay.
std::vector<Trace> leftInPlace(const std::vector<ScanResult>& results,
                               const std::vector<RemovalTarget>& chosen, RemovalMode mode);

} // namespace tidwen
