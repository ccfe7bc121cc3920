#pragma once

#include "scan/trace.h"

namespace tidwen {

/// Whether a trace is taken when the user chooses nothing: the application itself, and every trace of risk
/// safe or review that no other application contests and whose removal loses nothing for good.
bool takenByDefault(const Trace& trace);

} // namespace tidwen
