#pragma once

#include "cli/arguments.h"

#include <string>
#include <vector>

namespace tidwen {

/// The command started at login to watch the Trash of the volume and user in `arguments`; all paths of this
/// machine are absolute.
std::vector<std::string> loginCommand(const Arguments& arguments);

} // namespace tidwen
