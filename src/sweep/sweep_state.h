#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/timestamp.h"
#include "sweep/leftover_tree.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The running state of a sweep for orphans, as its screen shows it. Belongs to the main thread; the tree is
/// built on a queue of its own, and only the newest one is published.
class SweepState {
  public:
    /// `queue` is serial.
    SweepState(Executor& main, Executor& queue, std::string locale = "en");
    ~SweepState();
    SweepState(const SweepState&) = delete;
    SweepState& operator=(const SweepState&) = delete;

    /// What is shown, of one and the same set of traces.
    struct Snapshot {
        LeftoverTree tree;                                              ///< filtered
        std::array<int, allTraceRisks.size()> riskCounts = {};          ///< of all traces
        std::array<int, allTraceCategories.size()> categoryCounts = {}; ///< of all traces
        int totalCount = 0;
        std::string totalSizeText;
    };

    /// Told whenever `snapshot` became another one.
    Signal<> changed;

    const Snapshot& snapshot() const { return snapshot_; }
    const std::vector<const Trace*>& traces() const {
        return traces_.traces;
    }                                     ///< may be ahead of the snapshot
    const std::set<Uuid>& allIDs() const; ///< of the snapshot
    const std::optional<Timestamp>& startedAt() const { return startedAt_; }

    /// A new sweep: what was found before is gone.
    void begin(Timestamp now);
    /// More finds of the running sweep; what was seen before does not count again.
    void add(const std::vector<Trace>& found);
    /// The finds of the ended sweep take the place of what was streamed.
    void finish(SharedTraces traces);
    void finish(std::vector<Trace> traces) { finish(SharedTraces(std::move(traces))); }
    void setFilter(LeftoverFilter filter);
    const LeftoverFilter& filter() const { return filter_; }

  private:
    struct Shared;
    void replaceTraces(SharedTraces traces);
    void rebuild(bool tracesChanged);

    Executor& main_;
    Executor& queue_;
    std::string locale_;
    SharedTraces traces_;
    std::set<std::string> known_; ///< names of what was seen
    LeftoverFilter filter_;
    std::optional<Timestamp> startedAt_;
    Snapshot snapshot_;
    std::shared_ptr<const LeftoverList> list_; ///< of `traces_`, once a rebuild made it
    std::shared_ptr<Shared> shared_;           ///< outlives this for rebuilds on their way
};

} // namespace tidwen
