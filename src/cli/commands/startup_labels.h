#pragma once

#include "cli/command.h"
#include "program/mac.h"

#include <string>
#include <vector>

namespace tidwen {

/// The labels of this Mac's jobs, in the order of the `startup` list.
std::vector<std::string> startupLabels(const CommandContext& context, Mac& mac);

} // namespace tidwen
