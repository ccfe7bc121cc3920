#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/found_item.h"
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
    bool isFolder = false;                    ///< a package whose size is that of its contents
    bool isSizePartial = false;          ///< there was more than is measured: `sizeBytes` is a lower bound
    std::optional<FoundItem> found = {}; ///< as listed

    friend bool operator==(const InstallerFile&, const InstallerFile&) = default;
};

struct InstallerScanResult {
    std::vector<InstallerFile> files;    ///< largest first
    bool unreadable = false;             ///< Downloads could not be listed
    std::vector<Path> skippedNames = {}; ///< disk images and packages whose names are not valid UTF-8

    /// Downloads contains no other installers.
    bool isComplete() const { return !unreadable && skippedNames.empty(); }

    friend bool operator==(const InstallerScanResult&, const InstallerScanResult&) = default;
};

/// Read-only. A missing Downloads folder counts as unreadable, because its contents are unknown. Packages
/// that are folders have no size yet; `measurePackage` walks them.
InstallerScanResult listInstallers(const FileSystem& files, const UserEnvironment& user,
                                   const std::vector<InstalledApp>& apps);
/// The folder whose direct children are looked at.
Path installersFolder(const UserEnvironment& user);
/// Of a package that is a folder, its first `traceSizeEntryLimit` entries.
std::optional<TreeSize> measurePackage(const FileSystem& files, const Path& package,
                                       const StopToken& stop = {});
void setSize(InstallerFile& file, const TreeSize& size);
/// Largest first; what has no size counts as 0.
void sortBySize(std::vector<InstallerFile>& files);

/// The installed application that a file of this name belongs to: the one with the longest name that the
/// file's name starts with; a name of three or four letters must be the whole first word.
std::optional<InstalledApp> matchInstaller(std::string_view fileName, const std::vector<InstalledApp>& apps);

/// The trace with which an installer file is removed.
Trace installerTrace(const InstallerFile& file);

} // namespace tidwen
