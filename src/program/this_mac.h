#pragma once

#include "program/running_mac.h"

namespace tidwen {

/// Opens the Mac that the program runs on; empty where that is no Mac.
RunningMac::Open thisMac();

} // namespace tidwen
