#include "sweep/sweep_state.h"

#include "base/byte_sum.h"
#include "base/list_change.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"

#include <atomic>
#include <utility>

namespace tidwen {

/// The number of the newest rebuild requested; older ones in progress are dropped.
struct SweepState::Shared {
    std::atomic<std::uint64_t> newest = 0;
};

/// What a rebuild works with.
struct SweepState::Request {
    std::shared_ptr<const LeftoverList> list; ///< one that is there serves every filter
    SharedTraces traces;                      ///< else it is made of these
    LeftoverFilter filter;
    Texts texts;
    std::shared_ptr<const std::vector<SweepRow>> shown; ///< what `rows` hold, which becomes the new rows
    std::shared_ptr<const LeftoverList> shownList;      ///< what they point into
};

struct SweepState::Built {
    std::shared_ptr<const LeftoverList> list;
    Snapshot snapshot;
    std::shared_ptr<const std::vector<SweepRow>> rows;
    std::vector<RowChange> steps;
};

namespace {

SweepState::Snapshot makeSnapshot(const std::shared_ptr<const LeftoverList>& list,
                                  const LeftoverFilter& filter) {
    SweepState::Snapshot snapshot;
    const auto& sums = list->sums();
    snapshot.riskCounts = sums.byRisk;
    snapshot.categoryCounts = sums.byCategory;
    snapshot.totalCount = static_cast<int>(list->traces().size());
    snapshot.totalSizeText = sizeText(sums.size, list->texts());
    snapshot.tree = buildTree(list, filter);
    return snapshot;
}

std::vector<SweepRow> rowsOf(const LeftoverTree& tree) {
    std::vector<SweepRow> rows;
    rows.reserve(static_cast<std::size_t>(tree.totalCount)
                 + tree.tiers.size() * (1 + allTraceCategories.size()));
    for (const auto& tier : tree.tiers) {
        rows.push_back({.risk = tier.risk, .count = static_cast<std::size_t>(tier.count), .size = tier.size});
        for (const auto& group : tier.groups) {
            rows.push_back({.risk = tier.risk,
                            .category = group.category,
                            .count = group.rows.size(),
                            .size = group.size});
            for (const auto& row : group.rows)
                rows.push_back({.risk = tier.risk, .category = group.category, .trace = row.trace});
        }
    }
    return rows;
}

} // namespace

SweepState::SweepState(Executor& main, Executor& queue, const Texts& texts)
    : main_(main),
      queue_(queue),
      texts_(texts),
      shown_(std::make_shared<const std::vector<SweepRow>>()),
      shared_(std::make_shared<Shared>()) {}

SweepState::~SweepState() {
    ++shared_->newest;
}

const std::set<Uuid>& SweepState::allIDs() const {
    static const std::set<Uuid> none;
    return snapshot_.tree.list ? snapshot_.tree.list->ids() : none;
}

void SweepState::begin(Timestamp now) {
    startedAt_ = now;
    replaceTraces({});
}

void SweepState::add(const std::vector<Trace>& found) {
    std::vector<Trace> unseen;
    for (const auto& trace : found)
        if (known_.insert(trace.displayName).second) unseen.push_back(trace);
    traces_.add(std::move(unseen));
    rebuild(true);
}

void SweepState::finish(SharedTraces traces) {
    replaceTraces(std::move(traces));
}

/// Destroying thousands of traces takes long, so the old ones are destroyed on the queue.
void SweepState::replaceTraces(SharedTraces traces) {
    std::swap(traces_, traces);
    queue_.post([old = std::move(traces), known = std::exchange(known_, {})] {});
    rebuild(true);
}

void SweepState::setFilter(LeftoverFilter filter) {
    if (filter == filter_) return;
    filter_ = std::move(filter);
    rebuild(false);
}

SweepState::Built SweepState::build(Request request) {
    Built built;
    built.list = request.list
                     ? request.list
                     : std::make_shared<const LeftoverList>(std::move(request.traces), request.texts);
    built.snapshot = makeSnapshot(built.list, request.filter);
    auto rows = rowsOf(built.snapshot.tree);
    built.steps = ObservableList<SweepRow>::stepsBetween(*request.shown, rows);
    built.rows = std::make_shared<const std::vector<SweepRow>>(std::move(rows));
    return built;
}

/// What was shown goes with `built`.
void SweepState::publish(Built& built) {
    list_ = built.list;
    rows.assign(*built.rows, built.steps);
    std::swap(shown_, built.rows);
    std::swap(snapshot_, built.snapshot);
    changed.emit();
}

void SweepState::rebuild(bool tracesChanged) {
    if (tracesChanged || (list_ && list_->language() != texts_.language())) list_ = nullptr;
    const auto number = ++shared_->newest;
    Request request{list_, list_ ? SharedTraces() : traces_, filter_, texts_, shown_, snapshot_.tree.list};
    queue_.post([this, number, main = &main_, queue = &queue_, shared = shared_,
                 request = std::move(request)]() mutable {
        if (shared->newest != number) return;
        auto built = std::make_shared<Built>(build(std::move(request)));
        main->post([this, number, queue, shared, built = std::move(built)]() mutable {
            if (shared->newest != number) return;
            publish(*built);
            queue->post([old = std::move(built)] {});
        });
    });
}

} // namespace tidwen
