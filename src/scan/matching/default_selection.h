#pragma once

#include "scan/matching/scan_result.h"

namespace tidwen {

/// Whether it is clear enough whose a trace is to take it without its being named: no other application
/// contests it, and more than a package's list speaks for it.
bool isUndoubted(const Trace& trace);

/// Whether a trace is taken when the user chooses nothing: the application itself, and every undoubted trace
/// of risk safe or review whose removal loses nothing for good.
bool takenByDefault(const Trace& trace);

/// The same for a trace of this scan when the application is to go too: an application goes with its data or
/// not at all, so nothing is taken while it cannot be removed from where it lies.
bool takenByDefault(const Trace& trace, const ScanResult& result);

} // namespace tidwen
