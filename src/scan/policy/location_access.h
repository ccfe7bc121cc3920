#pragma once

#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

namespace tidwen {

/// What a search through a folder can say of it.
enum class LocationAccess {
    absent, ///< nothing is there, nor in the way to it
    open,   ///< a folder from which items may be taken; listing it may still be refused
    /// Something is there that cannot be searched: a link to a disk that is away, in circles or to a place
    /// from which nothing is ever taken, or no folder at all. What applications left there stays.
    closed,
};

/// `policy` judges paths whose links are resolved.
LocationAccess accessTo(const Path& folder, const FileSystem& files, const PathPolicy& policy);

} // namespace tidwen
