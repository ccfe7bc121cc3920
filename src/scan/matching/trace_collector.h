#pragma once

#include "base/log.h"
#include "scan/matching/size_measurer.h"
#include "scan/matching/trace.h"
#include "scan/policy/path_policy.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The traces of one scan in the order in which they were found, and the gate that each file passes. Files
/// are measured while the search goes on.
class TraceCollector {
  public:
    TraceCollector(const FileSystem& files, const PathPolicy& policy, const StopToken& stop, Log& log)
        : policy_(policy), log_(log), sizes_(files, stop) {}

    /// For what the application declares and for what is no file.
    void add(Trace trace);

    /// For a file or folder that was found. Left out, with `false`: one that must not be moved, also when
    /// `realParent`, the parent without links, leads to such a place; one that was found already, or whose
    /// folder was; one whose name no manifest can hold.
    bool addFound(Trace trace, const Path& realParent);

    /// Notes a find whose name is not valid UTF-8: no manifest could hold it.
    void skip(const Path& path);
    const std::vector<Path>& skippedNames() const { return skippedNames_; }

    const std::vector<Trace>& traces() const { return traces_; }

    /// The traces with their sizes; once, at the end.
    std::vector<Trace> take();

  private:
    bool isCovered(const Path& path) const;

    const PathPolicy& policy_;
    Log& log_;
    SizeMeasurer sizes_;
    std::vector<Trace> traces_;
    std::vector<Path> skippedNames_;
    std::vector<std::size_t> measured_;        ///< which of the traces
    std::set<std::string, std::less<>> paths_; ///< theirs, also without links
};

} // namespace tidwen
