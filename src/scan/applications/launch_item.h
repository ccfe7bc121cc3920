#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// A launchd job as its property list describes it (man page launchd.plist(5)).
struct LaunchItem {
    std::string label;           ///< never empty
    Path plist;                  ///< the file it was read from
    bool isSystemDomain = false; ///< a daemon of the system domain, otherwise a job of the user's session
    std::optional<std::string> programPath; ///< "Program", else the first of "ProgramArguments"
    /// Absolute paths in the arguments, the working directory and the environment: a shell may be passed the
    /// path of its script or a command line. From a command line, every part that may be a path, so these
    /// need not exist.
    std::vector<std::string> argumentPaths = {};

    friend bool operator==(const LaunchItem&, const LaunchItem&) = default;
};

/// nullopt when the file is not a property list or has no usable label.
std::optional<LaunchItem> readLaunchItem(const FileSystem& files, const Path& plist, bool isSystemDomain);

/// Lower-cased identifiers of the applications that the job serves ("AssociatedBundleIdentifiers": one or
/// several).
std::vector<std::string> readAssociatedBundleIDs(const FileSystem& files, const Path& plist);

/// Whether the property list keeps its job from starting ("Disabled"), unless launchd's overrides enable it.
bool declaresDisabled(const FileSystem& files, const Path& plist);

/// The items on the disk that the job needs to start: its program, its working directory, and paths in its
/// first 64 arguments and variables (an interpreter's script). Each as written and with links resolved;
/// missing items are left out.
std::vector<Path> placesOfProgram(const FileSystem& files, const LaunchItem& job);

/// The jobs of a folder's direct, visible "*.plist" children, in listing order. Empty for an unreadable
/// folder. Returns early with partial results when `stop` asks for it, after 5,000 jobs, or when the budget
/// is exhausted; the budget counts a folder that is cut short as left out. `unreadable`, unless null,
/// receives whatever may hold a job that is not returned: the folder when it cannot be listed or holds more
/// than is read, and each unreadable property list (but not one without a label).
std::vector<LaunchItem> listLaunchItems(const FileSystem& files, const Path& folder, bool isSystemDomain,
                                        const StopToken& stop = {}, std::vector<Path>* unreadable = nullptr);

/// The property list exists, perhaps as a link to a missing disk, and cannot be read.
bool isUnreadableJob(const FileSystem& files, const Path& plist);

} // namespace tidwen
