#pragma once

#include "scan/scan_context.h"
#include "scan/trace.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The traces of one scan in the order in which they were found, and the gate that each file passes.
class TraceCollector {
  public:
    explicit TraceCollector(const ScanContext& context) : context_(context) {}

    /// For what the application declares and for what is no file.
    void add(Trace trace);

    /// For a file or folder that was found. Left out: one that must not be moved, also when `realParent`, the
    /// parent without links, leads to such a place; one that was found already, or whose folder was; one
    /// whose name no manifest can hold.
    void addFound(Trace trace, const Path& realParent);

    const std::vector<Trace>& traces() const { return traces_; }
    std::vector<Trace> take() { return std::move(traces_); }

  private:
    bool isCovered(const Path& path) const;

    const ScanContext& context_;
    std::vector<Trace> traces_;
    std::set<std::string, std::less<>> paths_; ///< of the files among them
};

} // namespace tidwen
