#pragma once

#include "cli/command.h"
#include "cli/unseen.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// What a search could not look at, in lines; none when it looked at everything. Skipped names are shown with
/// replacement characters.
void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context);

/// The same with the folders that could not be listed.
void printUnseen(const Unseen& unseen, const CommandContext& context);

} // namespace tidwen
