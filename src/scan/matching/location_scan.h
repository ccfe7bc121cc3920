#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "scan/applications/launch_item.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/trace.h"
#include "scan/matching/trace_collector.h"
#include "scan/policy/search_location.h"

#include <optional>
#include <string_view>
#include <vector>

namespace tidwen {

/// Attributes a job: by the bundle that contains its program, by its label, else by a folder in its program's
/// path with the target's name.
std::optional<Attribution> attributeJob(const ScanContext& context, const LaunchItem& item);

/// The other bundle that contains a job's program, also through links.
std::optional<Claimant> holderOf(const ScanContext& context, const Path& program);

/// A vendor's folder contains one folder per application; so does a shared store.
bool isVendorFolder(const ResidueMatcher& matcher, std::string_view name);

/// Searches one location for traces of the target.
class LocationScan {
  public:
    LocationScan(const ScanContext& context, const SearchLocation& location, TraceCollector& traces)
        : context_(context), location_(location), traces_(traces) {}

    /// Returns what could not be searched and may hold more traces: the folder itself, vendors' folders,
    /// containers without a known owner, property lists of jobs.
    std::vector<Path> run();

  private:
    struct Folder {
        Path path;
        Path realPath; ///< the same without links
        std::vector<DirectoryEntry> entries;
    };

    std::optional<Folder> open(const Path& path, const Path& realPath);
    void miss(const Path& path);
    void judgeChildren(const Folder& folder);
    void judgeVendorFolder(const Folder& parent, const DirectoryEntry& vendor);
    void judgeContainers(const Folder& folder);
    void judgeReports(const Folder& folder);
    void judgeLaunchItems(const Folder& folder);

    void take(const Folder& folder, std::string_view name, Attribution attribution);

    const ScanContext& context_;
    const SearchLocation& location_;
    TraceCollector& traces_;
    std::vector<Path> unreadable_;
};

} // namespace tidwen
