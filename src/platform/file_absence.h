#pragma once

#include "platform/file_system.h"

namespace tidwen {

/// Nothing is there. Any other fault leaves open what is.
inline bool isAbsence(const FileError& error) {
    return error.fault == FileFault::missing || error.fault == FileFault::notDirectory;
}

/// Nothing has this name. Links are not followed.
inline bool isMissing(const FileSystem& files, const Path& item) {
    const auto info = files.info(item);
    return !info && info.error().fault == FileFault::missing;
}

/// The item is there, or it cannot be told that it is not. Links are followed.
inline bool mayBeThere(const FileSystem& files, const Path& item) {
    const auto info = files.infoFollowingLinks(item);
    return info || !isAbsence(info.error());
}

} // namespace tidwen
