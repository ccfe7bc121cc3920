#pragma once

#include "removal/removal_plan.h"
#include "scan/matching/scan_result.h"

#include <vector>

namespace tidwen {

/// Whether a removal in this mode can take the trace: not what only the user can deal with, and in a reset
/// neither the application nor its receipts.
bool isEligible(const Trace& trace, RemovalMode mode);

/// The application itself is among what is chosen of it, not its data alone.
bool takesTheApplication(const RemovalTarget& target);

/// Leaves out what goes anyway with a folder that is taken, and what an earlier application of the run takes:
/// the second move would fail, and undo would find the first one's place occupied. Applications of which
/// nothing is left drop out.
void takeEachItemOnce(std::vector<RemovalTarget>& targets);

/// What stays of one application or group of leftovers.
struct Remainder {
    AppTarget target;
    std::vector<Trace> traces;
    /// After a run: no later search finds these, as their application is gone. They can be taken when the run
    /// is undone and the application removed together with them.
    bool needsUndo = false;
};

/// What was found and is not among the chosen, nor goes along with them or is meant to stay, by application;
/// none is empty. What only the user can do is left when the application goes.
std::vector<Remainder> remainders(const std::vector<ScanResult>& found,
                                  const std::vector<RemovalTarget>& chosen, RemovalMode mode);
/// The same in one list.
std::vector<Trace> leftInPlace(const std::vector<ScanResult>& found, const std::vector<RemovalTarget>& chosen,
                               RemovalMode mode);

} // namespace tidwen
