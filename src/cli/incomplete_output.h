#pragma once

#include "cli/command.h"
#include "removal/unseen.h"
#include "scan/matching/scan_result.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// What a search could not look at, in lines; none when it looked at everything. Skipped names are shown with
/// replacement characters.
void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context);

/// Folders and records that could not be read; nothing when all could.
void printUnreadable(const std::vector<Path>& places, const CommandContext& context);

/// Where the applications may lie whose claims are not known; nothing when all are.
void printOwners(const BundleCoverage& owners, const CommandContext& context);

/// What of the application was no help in the search, its name or its identifier; nothing when both were.
void printUnsearchable(const ScanResult& result, const CommandContext& context);

/// What the search before a removal could not look at.
void printUnseen(const Unseen& unseen, const CommandContext& context);

} // namespace tidwen
