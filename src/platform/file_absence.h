#pragma once

#include "base/path.h"
#include "platform/file_system.h"

namespace tidwen {

/// The item does not exist. With any other fault it may.
inline bool isAbsence(const FileError& error) {
    return error.fault == FileFault::missing || error.fault == FileFault::notDirectory;
}

/// No item has this name. Links are not followed.
inline bool isMissing(const FileSystem& files, const Path& item) {
    const auto info = files.info(item);
    return !info && info.error().fault == FileFault::missing;
}

/// The item exists, or its absence cannot be established. Links are followed.
inline bool mayBeThere(const FileSystem& files, const Path& item) {
    const auto info = files.infoFollowingLinks(item);
    return info || !isAbsence(info.error());
}

} // namespace tidwen
