#pragma once

#include "quarantine/manifest.h"

#include <vector>

namespace tidwen {

/// One item to put back, and what it has to wait for. The pointers lead into the entries that were given.
struct RestoreStep {
    const ManifestEntry* entry = nullptr;
    const ManifestEntry* outer = nullptr; ///< the nearest item that it lay in, if that was moved too
    bool afterBatch = false; ///< a user-level item inside one that the administrator batch brings back
};

/// The moves that can be undone, in their order, except that an item which lay inside another one comes after
/// it: put back first, it would make a new folder in the place of the old one.
std::vector<RestoreStep> restoreOrder(const std::vector<ManifestEntry>& entries);

} // namespace tidwen
