#pragma once

#include "cli/arguments.h"

#include <string>
#include <vector>

namespace tidwen {

/// What a login starts so that the Trash of the volume and user named here is watched; every path of this
/// machine absolute.
std::vector<std::string> loginCommand(const Arguments& arguments);

} // namespace tidwen
