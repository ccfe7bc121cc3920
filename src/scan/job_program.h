#pragma once

#include "platform/file_system.h"

#include <string>

namespace tidwen {

/// What this disk tells of the program that a launchd job starts.
enum class JobProgram {
    present,
    gone,    ///< its place is on this disk, and the program is not there
    away,    ///< in a part of macOS or on another disk that is not here, or not to be looked up by its path
    unknown, ///< the top folder that it names is not on this disk
};

/// `program` as the job names it. A disk that is looked at from elsewhere may lack whole parts of the Mac
/// that it belongs to, and a disk image or drive may not be attached: what lies there is not gone.
JobProgram findJobProgram(const FileSystem& files, const std::string& program);

} // namespace tidwen
