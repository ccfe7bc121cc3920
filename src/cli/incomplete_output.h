#pragma once

#include "cli/command.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// What a search could not look at, in lines; none when it looked at everything. Skipped names are shown with
/// replacement characters.
void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context);

} // namespace tidwen
