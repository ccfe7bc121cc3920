#include "sweep/sweep_state.h"

#include "base/byte_sum.h"
#include "base/list_change.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <utility>

namespace tidwen {

/// The number of the newest rebuild requested; older ones in progress are dropped.
struct SweepState::Shared {
    std::atomic<std::uint64_t> newest = 0;
};

/// What `rows` hold, for a rebuild to compare with.
struct SweepState::Shown {
    std::shared_ptr<const LeftoverList> list; ///< what the rows point into
    std::vector<SweepRow> rows;
    std::vector<std::uint32_t> numbers; ///< of each row; equal ones name the same row of the same list
};

/// What a rebuild works with.
struct SweepState::Request {
    std::shared_ptr<const LeftoverList> list; ///< one that is there serves every filter
    SharedTraces traces;                      ///< else it is made of these
    LeftoverFilter filter;
    Texts texts;
    std::shared_ptr<const Shown> shown; ///< its rows become the new ones
};

struct SweepState::Built {
    std::shared_ptr<const LeftoverList> list;
    Snapshot snapshot;
    std::shared_ptr<const Shown> shown;
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

/// Headings are numbered before all finds.
constexpr std::uint32_t headingsPerTier = 1 + allTraceCategories.size();
constexpr std::uint32_t headings = allTraceRisks.size() * headingsPerTier;

std::uint32_t headingNumber(TraceRisk risk, std::optional<TraceCategory> category) {
    const auto inTier = category ? 1 + static_cast<std::uint32_t>(*category) : 0;
    return static_cast<std::uint32_t>(risk) * headingsPerTier + inTier;
}

} // namespace

SweepState::SweepState(Executor& main, Executor& queue, const Texts& texts)
    : main_(main),
      queue_(queue),
      texts_(texts),
      shown_(std::make_shared<const Shown>()),
      shared_(std::make_shared<Shared>()) {}

SweepState::~SweepState() {
    ++shared_->newest;
}

const std::set<Uuid>& SweepState::allIDs() const {
    static const std::set<Uuid> none;
    return snapshot_.tree.list ? snapshot_.tree.list->ids() : none;
}

std::size_t SweepState::findNumber(std::size_t row) const {
    return shown_->numbers[row] - headings;
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

SweepState::Shown SweepState::shownOf(const LeftoverTree& tree) {
    Shown shown;
    shown.list = tree.list;
    const auto most = static_cast<std::size_t>(tree.totalCount) + headings;
    shown.rows.reserve(most);
    shown.numbers.reserve(most);
    const auto add = [&](const SweepRow& row, std::uint32_t number) {
        shown.rows.push_back(row);
        shown.numbers.push_back(number);
    };
    for (const auto& tier : tree.tiers) {
        add({.risk = tier.risk, .count = static_cast<std::size_t>(tier.count), .size = tier.size},
            headingNumber(tier.risk, std::nullopt));
        for (const auto& group : tier.groups) {
            add({.risk = tier.risk,
                 .category = group.category,
                 .count = group.rows.size(),
                 .size = group.size},
                headingNumber(tier.risk, group.category));
            for (const auto& row : group.rows)
                add({.risk = tier.risk, .category = group.category, .trace = row.trace},
                    headings + row.number);
        }
    }
    return shown;
}

/// Another filter or order of one list needs no comparison of identifiers, which lie all over the memory.
std::vector<RowChange> SweepState::stepsBetween(const Shown& from, const Shown& to) {
    if (from.list != to.list) return ObservableList<SweepRow>::stepsBetween(from.rows, to.rows);
    constexpr auto nowhere = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> places(headings + (to.list ? to.list->traces().size() : 0), nowhere);
    for (std::uint32_t row = 0; row < to.numbers.size(); ++row)
        places[to.numbers[row]] = row;
    std::vector<std::optional<std::size_t>> newPlaces;
    newPlaces.reserve(from.numbers.size());
    for (const auto number : from.numbers)
        newPlaces.push_back(places[number] == nowhere ? std::nullopt
                                                      : std::optional<std::size_t>(places[number]));
    return rowChanges(newPlaces, to.rows.size());
}

SweepState::Built SweepState::build(Request request) {
    Built built;
    built.list = request.list
                     ? request.list
                     : std::make_shared<const LeftoverList>(std::move(request.traces), request.texts);
    built.snapshot = makeSnapshot(built.list, request.filter);
    built.shown = std::make_shared<const Shown>(shownOf(built.snapshot.tree));
    built.steps = stepsBetween(*request.shown, *built.shown);
    return built;
}

/// What was shown goes with `built`.
void SweepState::publish(Built& built) {
    const auto change = list_ == built.list ? SweepChange::tree : SweepChange::finds;
    list_ = built.list;
    rows.assign(built.shown->rows, built.steps);
    std::swap(shown_, built.shown);
    std::swap(snapshot_, built.snapshot);
    changed.emit(change);
}

void SweepState::rebuild(bool tracesChanged) {
    if (tracesChanged || (list_ && list_->language() != texts_.language())) list_ = nullptr;
    const auto number = ++shared_->newest;
    Request request{list_, list_ ? SharedTraces() : traces_, filter_, texts_, shown_};
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
