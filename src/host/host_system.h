#pragma once

#include "services/update_feed.h"

namespace tidwen {

/// The machine this program runs on: "macOS" with its version, elsewhere the kernel's name and version.
HostSystem hostSystem();

} // namespace tidwen
