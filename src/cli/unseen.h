#pragma once

#include "base/path.h"

#include <cstdint>
#include <vector>

namespace tidwen {

/// Where the search before a removal could not look: what lies there stays.
struct Unseen {
    std::vector<Path> unreadableLocations = {}; ///< folders that could not be listed
    std::uint64_t leftOut = 0;                  ///< files and folders that were too many to read

    bool isNothing() const { return unreadableLocations.empty() && leftOut == 0; }
};

} // namespace tidwen
