#pragma once

#include "base/log.h"
#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "scan/matching/size_measurer.h"
#include "scan/matching/trace.h"
#include "scan/policy/path_policy.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// Collects the traces of one scan in order of discovery, and decides which files are accepted. Files are
/// measured while the search continues.
class TraceCollector {
  public:
    TraceCollector(const FileSystem& files, const PathPolicy& policy, const StopToken& stop, Log& log)
        : files_(files), policy_(policy), log_(log), sizes_(files, stop) {}

    /// For what the application declares and for everything that is not a file.
    void add(Trace trace);

    /// For a file or folder found by the search. Returns false and leaves it out when it must not be moved,
    /// also because `realParent`, the parent without links, leads to such a place; when it, or a folder
    /// containing it, was already found; or when no manifest can store its name.
    bool addFound(Trace trace, const Path& realParent);

    /// Records a find whose name is not valid UTF-8, which no manifest can store.
    void skip(const Path& path);
    const std::vector<Path>& skippedNames() const { return skippedNames_; }

    const std::vector<Trace>& traces() const { return traces_; }

    /// The traces with their sizes; call it once, at the end.
    std::vector<Trace> take();

  private:
    bool isCovered(const Path& path) const;

    const FileSystem& files_;
    const PathPolicy& policy_;
    Log& log_;
    SizeMeasurer sizes_;
    std::vector<Trace> traces_;
    std::vector<Path> skippedNames_;
    std::vector<std::size_t> measured_;        ///< indices in the traces
    std::set<std::string, std::less<>> paths_; ///< of the traces, also without links
};

} // namespace tidwen
