#pragma once

#include "scan/matching/scan_context.h"
#include "scan/matching/trace_collector.h"
#include "scan/policy/search_location.h"

#include <optional>
#include <string_view>
#include <vector>

namespace tidwen {

/// Whose a job is: by the bundle in which its program lies, by its label, else by a folder on the way to its
/// program that bears the target's name.
std::optional<Attribution> attributeJob(const ScanContext& context, const LaunchItem& item);

/// In which other bundle a job's program lies, also by way of links.
std::optional<Claimant> holderOf(const ScanContext& context, const Path& program);

/// A vendor's folder holds one folder for each of its applications; a shared store one for each application.
bool isVendorFolder(const ResidueMatcher& matcher, std::string_view name);

/// Searches one location for what is the target's.
class LocationScan {
  public:
    LocationScan(const ScanContext& context, const SearchLocation& location, TraceCollector& traces)
        : context_(context), location_(location), traces_(traces) {}

    /// Gives what could not be looked at, so that something of the target's may remain there: the folder
    /// itself, makers' folders, containers that do not say whose they are, property lists of jobs.
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
