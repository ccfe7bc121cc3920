#pragma once

#include "program/running_mac.h"

namespace tidwen {

/// Opens the Mac that the program runs on; empty where that is no Mac.
std::function<tl::expected<std::unique_ptr<RunningMac>, Message>(HostServices&, const Texts&, Log&)>
thisMac();

} // namespace tidwen
