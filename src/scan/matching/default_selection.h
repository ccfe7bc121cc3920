#pragma once

#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"

namespace tidwen {

/// Whether ownership of a trace is clear enough to take it without being named: no other application contests
/// it or may be unseen, and there is more evidence than a package's file list.
bool isUndoubted(const Trace& trace);

/// Whether a trace is selected by default: the application itself, and every undoubted trace of risk safe or
/// review whose removal loses no data permanently.
bool takenByDefault(const Trace& trace);

/// The same for a trace of this scan when the application is to be removed too: the application and its data
/// are removed together or not at all, so nothing is selected while the application cannot be moved.
bool takenByDefault(const Trace& trace, const ScanResult& result);

/// Whether it is a reset of permissions that changes nothing, as far as all can be read: macOS has recorded
/// none, or only for a program's path, which no reset reaches. Every application has that trace: what is
/// recorded until the removal is reset all the same.
bool resetsNothing(const Trace& trace, const ScanResult& result);

} // namespace tidwen
