#pragma once

#include "base/path.h"
#include "platform/user_environment.h"
#include "scan/policy/trace_category.h"

#include <vector>

namespace tidwen {

/// A folder where applications leave files, and how its entries are interpreted.
struct SearchLocation {
    enum class Style {
        launchItemPlists,     ///< every "*.plist" is a launchd job
        directChildren,       ///< every child is a candidate by its name
        vendorNestedChildren, ///< the same, plus the children of vendors' folders
        containerDirectories, ///< every child is a sandbox container, identified by its metadata file
        prefixedReports,      ///< diagnostic reports: the name before the first "_" is matched
    };

    Path url;
    TraceCategory category = TraceCategory::supportFiles;
    Style style = Style::directChildren;
    bool isSystemDomain = false;         ///< for `launchItemPlists`: its jobs run in the system domain
    bool requiresRoot = false;           ///< removing anything here requires an administrator
    bool requiresFullDiskAccess = false; ///< protected by macOS; listing it requires the permission

    friend bool operator==(const SearchLocation&, const SearchLocation&) = default;
};

/// The user's Library and the per-user temporary folders, in scan order.
std::vector<SearchLocation> userLocations(const UserEnvironment& user);
/// The Mac's own Library, receipts and the shared folder, in scan order.
std::vector<SearchLocation> systemLocations();
/// Both, user first.
std::vector<SearchLocation> searchLocations(const UserEnvironment& user);

} // namespace tidwen
