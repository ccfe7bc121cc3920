#pragma once

#include "base/path.h"

#include <cstddef>
#include <string>
#include <vector>

/// What real applications leave behind, as people collected it: one JSON object a line (README.md names the
/// fields).
namespace tidwen::bench {

struct Cask {
    std::string token;
    std::string family;     ///< editions of one application share leftovers and may be taken for one another
    std::string name;       ///< of the bundle, for people
    std::string bundleFile; ///< "Marlin Notes.app"
    std::string bundleID;
    std::vector<std::string> helpers;  ///< identifiers beside it: mostly those of bundles inside the bundle
    std::vector<std::string> packages; ///< identifiers of installer receipts
    std::vector<Path> leftovers;       ///< below "/Users/alice" or system-wide; patterns as they stand
};

/// Those that have an identifier. Lines that are none are passed over.
std::vector<Cask> readCasks(const char* file);

} // namespace tidwen::bench
