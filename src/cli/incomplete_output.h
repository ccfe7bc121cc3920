#pragma once

#include "base/path.h"
#include "cli/command.h"
#include "removal/unseen.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/matching/scan_result.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// Prints what a search could not read; nothing if it was complete. Skipped names are shown with replacement
/// characters.
void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context);

/// Prints folders and records that could not be read; nothing without any.
void printUnreadable(const std::vector<Path>& places, const CommandContext& context);

/// Prints where applications may be whose claims are unknown; nothing if all are known.
void printOwners(const BundleCoverage& owners, const CommandContext& context);

/// Prints which of the application's name and identifier could not be used for searching; nothing if both
/// could.
void printUnsearchable(const ScanResult& result, const CommandContext& context);

/// Prints what the search before a removal could not read.
void printUnseen(const Unseen& unseen, const CommandContext& context);

} // namespace tidwen
