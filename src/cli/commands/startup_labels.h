#pragma once

#include "cli/command.h"

#include <string>
#include <vector>

namespace tidwen {

/// What `startup` calls the jobs of this Mac, in the order of its list.
std::vector<std::string> startupLabels(const CommandContext& context, Mac& mac);

} // namespace tidwen
