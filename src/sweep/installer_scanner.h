#pragma once

#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/trace.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tidwen {

/// A disk image or installer package in Downloads.
struct InstallerFile {
    Path url;
    std::optional<std::int64_t> sizeBytes;
    std::optional<Timestamp> addedAt;         ///< when the item was created
    std::optional<InstalledApp> installedApp; ///< the application that it most likely installed

    friend bool operator==(const InstallerFile&, const InstallerFile&) = default;
};

struct InstallerScanResult {
    std::vector<InstallerFile> files;    ///< largest first
    bool unreadable = false;             ///< Downloads could not be listed
    std::vector<Path> skippedNames = {}; ///< disk images and packages whose names are not valid UTF-8

    /// There are no other installers in Downloads.
    bool isComplete() const { return !unreadable && skippedNames.empty(); }
};

/// Only reads. A missing Downloads folder is unreadable too: there is nothing to be said about its content.
InstallerScanResult scanInstallers(const FileSystem& files, const UserEnvironment& user,
                                   const std::vector<InstalledApp>& apps);

/// The installed application that a file of this name belongs to: the one with the longest name that the
/// file's name begins with; a name of three or four letters must be the whole leading word.
std::optional<InstalledApp> matchInstaller(std::string_view fileName, const std::vector<InstalledApp>& apps);

/// The trace by which an installer file is removed.
Trace installerTrace(const InstallerFile& file);

} // namespace tidwen
