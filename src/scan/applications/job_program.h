#pragma once

#include "platform/file_system.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace tidwen {

/// What this disk tells of the program that a launchd job starts.
enum class JobProgram {
    present,
    gone,    ///< its place is on this disk, and the program is not there
    away,    ///< in a part of macOS or on another disk that is not here, or not to be looked up by its path
    unknown, ///< the top folder that it names is not on this disk
};

/// Looks for the programs of many jobs. A disk that is looked at from elsewhere may lack whole parts of the
/// Mac that it belongs to, and a disk image or drive may not be attached: what lies there is not gone.
/// Folders are listed once and in bounds; what lies beyond them is `away`.
class JobPrograms {
  public:
    explicit JobPrograms(const FileSystem& files) : files_(files) {}

    /// `program` as the job names it.
    JobProgram find(const std::string& program);

  private:
    /// Keys of the names in a folder, as `fileNameKey` gives them.
    using Names = std::set<std::string>;

    JobProgram judgeMissing(const Path& program);
    const Names* namesIn(const Path& folder);
    bool holds(const Path& place);

    const FileSystem& files_;
    std::map<Path, std::optional<Names>> listed_;
    std::size_t entriesLeft_ = 200'000;
};

} // namespace tidwen
