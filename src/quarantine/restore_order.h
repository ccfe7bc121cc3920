#pragma once

#include "quarantine/manifest.h"

#include <vector>

namespace tidwen {

/// One item to put back, and what it must wait for. Points into the given entries.
struct RestoreStep {
    const ManifestEntry* entry = nullptr;
    const ManifestEntry* outer = nullptr; ///< the nearest enclosing item, if that was moved too
    bool afterBatch = false; ///< a user-level item inside one that the administrator batch puts back
};

/// The moves that can be undone, in order, except that an item inside another one follows it: put back first,
/// it would create a new folder in the place of the old one.
std::vector<RestoreStep> restoreOrder(const std::vector<ManifestEntry>& entries);

} // namespace tidwen
