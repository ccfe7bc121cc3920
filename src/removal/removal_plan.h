#pragma once

#include "base/message.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "quarantine/quarantine_layout.h"
#include "scan/applications/app_target.h"
#include "scan/matching/trace.h"

#include <map>
#include <string>
#include <vector>

namespace tidwen {

/// One application with the traces that the user confirmed.
struct RemovalTarget {
    AppTarget target;
    std::vector<Trace> traces;
    bool isRunning = false; ///< had a running instance when the removal was requested
    /// The identifiers of other applications of the run with as strong a claim to the item of a trace.
    std::map<Uuid, std::vector<std::string>> sharedWith = {};
    /// Why steps of a trace must not be run, as the disk is now (`refuseWhatChanged`).
    std::map<Uuid, Message> refusals = {};

    bool isRefusedWhole() const { return !traces.empty() && refusals.size() == traces.size(); }
};

/// Whether the mode leaves this trace in place: a reset keeps the application and its receipts.
bool staysInMode(const Trace& trace, RemovalMode mode);

/// Turns confirmed traces into numbered operations. Order within a target: permission resets (while the
/// application is still registered), job unloads, keychain deletions, moves in path order with the bundle
/// last, then preference flushes. Pure: does not access the disk.
std::vector<RemovalOperation> buildRemovalPlan(const std::vector<RemovalTarget>& targets,
                                               const QuarantineLayout& layout, RemovalMode mode);

} // namespace tidwen
