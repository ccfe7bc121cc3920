#pragma once

#include "base/descriptor.h"

namespace tidwen {

/// What a comparison of an item with its copy must show.
enum class Compared {
    whole, ///< both have the same entries with the same content and metadata
    /// The first may have lost entries, and its owner may have got access to its folders, as `removeTree`
    /// leaves them; the rest of it is as in the second.
    remains,
};

enum class Reading {
    everything,
    withinLimit, ///< as the `ComparisonLimit` of the thread allows, else ECANCELED
};

/// Compares an item and everything below it with its copy, byte by byte.
OsResult<bool> isSameTree(int folder, const char* name, int copyFolder, const char* copyName,
                          Compared compared, Reading reading);

} // namespace tidwen
