#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Where a run moves its items.
struct QuarantineLayout {
    Path root;            ///< "<home>/.Trash/Tidwen - <label> - <yyyy-MM-dd HH-mm-ss>"
    bool isBatch = false; ///< several applications: each has its own folder below `root`
    friend bool operator==(const QuarantineLayout&, const QuarantineLayout&) = default;
};

inline constexpr const char* manifestFileName = "tidwen-manifest.json";
inline constexpr const char* journalFileName = "tidwen-journal.json";
/// Reserves disk space for the manifest during a run.
inline constexpr const char* reserveFileName = "tidwen-reserve";

/// Whether a name in a quarantine folder is one of these, or their temporary file left by a kill.
bool isRunDocument(std::string_view name);

/// The name that an entry of a run's folder has while a purge deletes what is in it: it is no longer whole,
/// and nothing in it is an item for any reader.
std::string nameWhilePurged(const std::string& entry);
bool isNameWhilePurged(std::string_view entry);
/// Whether a purge was cut off while it deleted this item of the run in `root`.
bool isPartlyPurged(const Path& item, const Path& root, const FileSystem& files);

/// A label that is valid in a folder's name: "/", ":", "\" and control characters become "-", trimmed; "App"
/// when nothing is left or the result has a special meaning ("..", the manifest's name). Short enough for a
/// quarantine folder's name to be a valid file name.
std::string safeLabel(std::string_view applicationName);

/// Whether a folder's name has the form of a run's, including the date; any other may be the user's own
/// folder.
bool hasRunName(const Path& folder);

/// Creates nothing.
QuarantineLayout makeLayout(const std::vector<AppRecord>& apps, Timestamp date, const UserEnvironment& user);

/// Creates the folder, and the Trash if missing. A name that is taken gets " (2)" … " (100)", then the fault
/// is `exists`. Refuses a Trash that is a link. `root` is the folder created.
FileResult<QuarantineLayout> createQuarantineFolder(const std::vector<AppRecord>& apps, Timestamp date,
                                                    const UserEnvironment& user, FileSystem& files);

/// Quarantine folders in the user's Trash, sorted by name; empty without a Trash. Links are ignored, and a
/// Trash that is a link is refused.
FileResult<std::vector<Path>> listQuarantineFolders(const UserEnvironment& user, const FileSystem& files);

} // namespace tidwen
