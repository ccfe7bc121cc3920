#pragma once

#include "base/byte_sum.h"
#include "base/executor.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"
#include "sweep/leftover_tree.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace tidwen {

/// One line of a list of finds: the heading of a tier, that of a category in it, or a find.
struct SweepRow {
    TraceRisk risk = TraceRisk::safe;
    std::optional<TraceCategory> category = {}; ///< nothing: the heading of the tier
    const Trace* trace = nullptr;               ///< null: a heading
    std::size_t count = 0;                      ///< of a heading: finds below it
    ByteSum size = {};                          ///< of a heading: their sizes, as far as they are known

    std::tuple<TraceRisk, std::optional<TraceCategory>, std::optional<Uuid>> key() const {
        return {risk, category, trace ? std::optional(trace->id) : std::nullopt};
    }
    friend bool operator==(const SweepRow&, const SweepRow&) = default;
};

/// What a change of `SweepState` is about.
enum class SweepChange {
    finds, ///< other finds, or their names in another language
    tree,  ///< only what of them passes the filter
};

/// The running state of a sweep for orphans, as its screen shows it. Belongs to the main thread; the tree is
/// built on a queue of its own, and only the newest one is published.
class SweepState {
  public:
    /// `queue` is serial. `texts` order and name; call `arrange` when they are in another language.
    SweepState(Executor& main, Executor& queue, const Texts& texts);
    ~SweepState();
    SweepState(const SweepState&) = delete;
    SweepState& operator=(const SweepState&) = delete;

    /// What is shown; all of it for the same set of traces.
    struct Snapshot {
        LeftoverTree tree;                                              ///< filtered
        std::array<int, allTraceRisks.size()> riskCounts = {};          ///< of all traces
        std::array<int, allTraceCategories.size()> categoryCounts = {}; ///< of all traces
        int totalCount = 0;
        std::string totalSizeText;
    };

    /// Emitted whenever `snapshot` has changed.
    Signal<SweepChange> changed;
    /// The tree line by line, without what the user has to deal with by hand. Follows before `changed` is
    /// told; what its rows point at lives until the next `changed`.
    ObservableList<SweepRow> rows;

    const Snapshot& snapshot() const { return snapshot_; }
    /// Of the find in each of `rows`, its number in the list of the snapshot's tree; once `changed` is told.
    std::size_t findNumber(std::size_t row) const;
    const std::vector<const Trace*>& traces() const {
        return traces_.traces;
    }                                     ///< may be ahead of the snapshot
    const std::set<Uuid>& allIDs() const; ///< of the snapshot
    const std::optional<Timestamp>& startedAt() const { return startedAt_; }

    /// Begins a new sweep; earlier finds are dropped.
    void begin(Timestamp now);
    /// Adds finds of the running sweep; repeated ones are ignored.
    void add(const std::vector<Trace>& found);
    /// Replaces the streamed finds by those of the finished sweep.
    void finish(SharedTraces traces);
    void finish(std::vector<Trace> traces) { finish(SharedTraces(std::move(traces))); }
    void setFilter(LeftoverFilter filter);
    void arrange() { rebuild(false); }
    const LeftoverFilter& filter() const { return filter_; }

  private:
    struct Shared;
    struct Shown;
    struct Request;
    struct Built;
    static Shown shownOf(const LeftoverTree& tree);
    static std::vector<RowChange> stepsBetween(const Shown& from, const Shown& to);
    static Built build(Request request);
    void publish(Built& built);
    void replaceTraces(SharedTraces traces);
    void rebuild(bool tracesChanged);

    Executor& main_;
    Executor& queue_;
    const Texts& texts_;
    SharedTraces traces_;
    std::set<std::string> known_; ///< names of finds already added
    LeftoverFilter filter_;
    std::optional<Timestamp> startedAt_;
    Snapshot snapshot_;
    std::shared_ptr<const Shown> shown_;
    std::shared_ptr<const LeftoverList> list_; ///< of `traces_`, once a rebuild made it
    std::shared_ptr<Shared> shared_;           ///< outlives this for rebuilds on their way
};

} // namespace tidwen
