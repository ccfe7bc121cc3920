#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace tidwen {

/// What this disk shows of the program that a launchd job starts.
enum class JobProgram {
    present,
    gone,    ///< its location is on this disk, and the program does not exist
    away,    ///< in a part of macOS or on another disk that is not present, or not searchable by path
    unknown, ///< the top-level folder that it names is not on this disk
};

/// Looks up the programs of many jobs. A mounted volume may lack whole parts of its Mac, and a disk image or
/// drive may not be attached: programs there are not gone. Folders are listed once, with limits; what lies
/// beyond them is `away`.
class JobPrograms {
  public:
    explicit JobPrograms(const FileSystem& files) : files_(files) {}

    /// `program` as written in the job.
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
