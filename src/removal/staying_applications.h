#pragma once

#include "removal/removal_plan.h"
#include "scan/matching/scan_result.h"

#include <set>
#include <vector>

namespace tidwen {

/// Of what was scanned to go in one run, the applications that the choice leaves where they are: an uninstall
/// does not take their bundle, a reset nothing of theirs. One whose bundle was not found to be taken (in the
/// Trash, already gone) stays nowhere.
std::vector<ScanResult> stayingApplications(const std::vector<ScanResult>& found,
                                            const std::vector<RemovalTarget>& chosen, RemovalMode mode);

/// Applications that are scanned together contest nothing with one another, as all of them are to go. This
/// takes out of `chosen` what one of `staying` has as good a claim to as the application that goes. An item
/// that stays for its sake is not taken by another entry of the run either. What the user named one by one
/// (`named`, identifiers of traces) goes whoever claims it, as in a removal of one application.
void leaveToThoseThatStay(const std::vector<ScanResult>& staying, std::vector<RemovalTarget>& chosen,
                          const std::set<Uuid>& named = {});

} // namespace tidwen
