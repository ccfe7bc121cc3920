#pragma once

#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Where one run puts what it moves.
struct QuarantineLayout {
    Path root;            ///< "<home>/.Trash/Tidwen - <label> - <yyyy-MM-dd HH-mm-ss>"
    bool isBatch = false; ///< more than one application: each gets a folder of its own below `root`
    friend bool operator==(const QuarantineLayout&, const QuarantineLayout&) = default;
};

inline constexpr const char* manifestFileName = "tidwen-manifest.json";
inline constexpr const char* journalFileName = "tidwen-journal.json";
/// Holds the disk space of the manifest while a run lasts.
inline constexpr const char* reserveFileName = "tidwen-reserve";

/// Whether a name in a quarantine folder is one of these, or of one that a kill left half written.
bool isRunDocument(std::string_view name);

/// A name that may stand in a folder's name: "/", ":", "\" and control characters become "-", trimmed; "App"
/// when nothing is left or when it would mean something else there ("..", the manifest's own name). Never
/// longer than a file name may be together with what a quarantine folder adds to it.
std::string safeLabel(std::string_view applicationName);

/// Whether a folder bears the name that a run gives, its date included; any other may be the user's own.
bool hasRunName(const Path& folder);

/// Pure; creates nothing.
QuarantineLayout makeLayout(const std::vector<AppRecord>& apps, Timestamp date, const UserEnvironment& user);

/// Creates the folder, and the Trash when there is none; a name that is taken gets " (2)" … " (100)", and
/// beyond that the fault is `exists`. A Trash that is a link is refused. `root` is what was really created.
FileResult<QuarantineLayout> createQuarantineFolder(const std::vector<AppRecord>& apps, Timestamp date,
                                                    const UserEnvironment& user, FileSystem& files);

/// Quarantine folders in the user's Trash, sorted by name; none when there is no Trash. Links are not taken
/// for folders, nor for the Trash.
FileResult<std::vector<Path>> listQuarantineFolders(const UserEnvironment& user, const FileSystem& files);

} // namespace tidwen
