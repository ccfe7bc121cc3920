#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// A launchd job as its property list describes it (man page launchd.plist(5)).
struct LaunchItem {
    std::string label;           ///< never empty
    Path plist;                  ///< the file it was read from
    bool isSystemDomain = false; ///< a daemon of the system domain, else a job of the user's session
    std::optional<std::string> programPath; ///< "Program", else the first of "ProgramArguments"
    /// Absolute paths in the arguments, the working directory and the environment: a shell is handed the
    /// script that it runs, or the text of one. Of a text each part that may be a path, so they need not
    /// exist.
    std::vector<std::string> argumentPaths = {};

    friend bool operator==(const LaunchItem&, const LaunchItem&) = default;
};

/// Nothing when the file is no property list or has no usable label.
std::optional<LaunchItem> readLaunchItem(const FileSystem& files, const Path& plist, bool isSystemDomain);

/// Lower-cased identifiers of the applications that the job says it works for
/// ("AssociatedBundleIdentifiers": one or several).
std::vector<std::string> readAssociatedBundleIDs(const FileSystem& files, const Path& plist);

/// What of the disk the job needs to start: its program, its working directory, and what it hands to it, of
/// the first 64 arguments and variables (an interpreter's script). Each as it is written and without links;
/// what is not there is left out.
std::vector<Path> placesOfProgram(const FileSystem& files, const LaunchItem& job);

/// Every job of a folder's direct, visible "*.plist" children, in listing order. An unreadable folder is
/// empty. Ends early, with what it has, when `stop` asks for it, after 5,000 jobs, or when the files' budget
/// is spent; the budget counts a folder that is cut short as left out. `unreadable`, unless null, receives
/// what may be or hold a job that is not in the answer: the folder when it cannot be listed or holds more
/// than is read, and each property list that cannot be read (not: has no label).
std::vector<LaunchItem> listLaunchItems(const FileSystem& files, const Path& folder, bool isSystemDomain,
                                        const StopToken& stop = {}, std::vector<Path>* unreadable = nullptr);

/// The property list is there, perhaps as a link to what is away, and nothing can be read from it.
bool isUnreadableJob(const FileSystem& files, const Path& plist);

} // namespace tidwen
