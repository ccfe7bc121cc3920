#pragma once

#include "base/path.h"

#include <cstddef>
#include <string>
#include <vector>

/// Leftovers of real applications from manually maintained lists: one JSON object per line (README.md
/// describes the fields).
namespace tidwen::bench {

struct Cask {
    std::string token;
    std::string family;     ///< editions of one application share leftovers and may be confused
    std::string name;       ///< of the bundle, display name
    std::string bundleFile; ///< "Marlin Notes.app"
    std::string bundleID;
    std::vector<std::string> helpers;  ///< further identifiers, mostly of nested bundles
    std::vector<std::string> packages; ///< identifiers of installer receipts
    std::vector<Path> leftovers;       ///< below "/Users/alice" or system-wide; patterns are kept
};

/// The entries with an identifier; malformed lines are skipped.
std::vector<Cask> readCasks(const char* file);

} // namespace tidwen::bench
