#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

namespace tidwen {

/// Whether a folder can be searched.
enum class LocationAccess {
    absent, ///< neither it nor an obstacle on its path exists
    open,   ///< a folder from which items may be moved; listing it may still fail
    /// Something exists that cannot be searched: a link to a missing disk, in a cycle or to a place from
    /// which nothing is ever moved, or not a folder at all. Its contents stay.
    closed,
};

/// `policy` must accept resolved paths.
LocationAccess accessTo(const Path& folder, const FileSystem& files, const PathPolicy& policy);

} // namespace tidwen
