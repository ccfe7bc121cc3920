#pragma once

#include "scan/trace.h"

namespace tidwen {

/// Whether it is clear enough whose a trace is to take it without its being named: no other application
/// contests it, and more than a package's list speaks for it.
bool isUndoubted(const Trace& trace);

/// Whether a trace is taken when the user chooses nothing: the application itself, and every undoubted trace
/// of risk safe or review whose removal loses nothing for good.
bool takenByDefault(const Trace& trace);

} // namespace tidwen
