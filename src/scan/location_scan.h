#pragma once

#include "scan/scan_context.h"
#include "scan/search_location.h"
#include "scan/trace_collector.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// Searches one location for what is the target's.
class LocationScan {
  public:
    LocationScan(const ScanContext& context, const SearchLocation& location, TraceCollector& traces)
        : context_(context), location_(location), traces_(traces) {}

    /// False when the folder is there and cannot be listed.
    bool run();

  private:
    struct Folder {
        Path path;
        Path realPath; ///< the same without links
        std::vector<DirectoryEntry> entries;
    };

    std::optional<Folder> open(const Path& path, const Path& realPath, bool& isUnreadable) const;
    void judgeChildren(const Folder& folder);
    void judgeVendorFolder(const Folder& parent, const DirectoryEntry& vendor);
    void judgeContainers(const Folder& folder);
    void judgeReports(const Folder& folder);
    void judgeLaunchItems(const Folder& folder);

    std::optional<Attribution> attributeJob(const LaunchItem& item) const;
    bool mayNameOwner(const Path& place, std::string_view component, const MatchReason& reason) const;
    bool isVendorFolder(const DirectoryEntry& entry) const;
    void take(const Folder& folder, std::string_view name, Attribution attribution);

    const ScanContext& context_;
    const SearchLocation& location_;
    TraceCollector& traces_;
};

} // namespace tidwen
