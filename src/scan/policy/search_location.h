#pragma once

#include "platform/user_environment.h"
#include "scan/policy/trace_category.h"

#include <vector>

namespace tidwen {

/// A folder in which applications leave things, and how its entries are read.
struct SearchLocation {
    enum class Style {
        launchItemPlists,     ///< every "*.plist" is a launchd job
        directChildren,       ///< every child is a candidate by its name
        vendorNestedChildren, ///< the same, and the children of a vendor's folder are candidates too
        containerDirectories, ///< every child is a sandbox container, known by its metadata file
        prefixedReports,      ///< diagnostic reports: the name before the first "_" is judged
    };

    Path url;
    TraceCategory category = TraceCategory::supportFiles;
    Style style = Style::directChildren;
    bool isSystemDomain = false; ///< of `launchItemPlists`: its jobs run in the system domain
    bool requiresRoot = false;   ///< taking something away from here needs an administrator
    bool requiresFullDiskAccess =
        false; ///< macOS guards this folder; without the permission it cannot be listed

    friend bool operator==(const SearchLocation&, const SearchLocation&) = default;
};

/// The user's Library and the per-user temporary folders, in scanning order.
std::vector<SearchLocation> userLocations(const UserEnvironment& user);
/// The Mac's own Library, receipts and the shared folder, in scanning order.
std::vector<SearchLocation> systemLocations();
/// Both, user first.
std::vector<SearchLocation> searchLocations(const UserEnvironment& user);

} // namespace tidwen
