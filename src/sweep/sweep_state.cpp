#include "sweep/sweep_state.h"

#include "base/byte_count.h"

#include <atomic>
#include <utility>

namespace tidwen {

/// The number of the newest rebuild that was asked for: an older one on its way is dropped.
struct SweepState::Shared {
    std::atomic<std::uint64_t> newest = 0;
};

namespace {

SweepState::Snapshot makeSnapshot(const std::shared_ptr<const LeftoverList>& list,
                                  const LeftoverFilter& filter) {
    SweepState::Snapshot snapshot;
    const auto& sums = list->sums();
    snapshot.riskCounts = sums.byRisk;
    snapshot.categoryCounts = sums.byCategory;
    snapshot.totalCount = static_cast<int>(list->traces().size());
    snapshot.totalSizeText = formatByteCount(sums.bytes, list->locale());
    snapshot.tree = buildTree(list, filter);
    return snapshot;
}

} // namespace

SweepState::SweepState(Executor& main, Executor& queue, std::string locale)
    : main_(main), queue_(queue), locale_(std::move(locale)), shared_(std::make_shared<Shared>()) {}

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

/// Taking thousands of traces apart takes long, so what was there ends on the queue.
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

void SweepState::rebuild(bool tracesChanged) {
    if (tracesChanged) list_ = nullptr;
    const auto number = ++shared_->newest;
    // A list that is there serves every filter; else the traces go along and the list is made on the queue.
    queue_.post([this, number, main = &main_, queue = &queue_, shared = shared_, list = list_,
                 traces = list_ ? SharedTraces() : traces_, filter = filter_, locale = locale_]() mutable {
        if (shared->newest != number) return;
        if (!list) list = std::make_shared<const LeftoverList>(std::move(traces), locale);
        auto snapshot = std::make_shared<Snapshot>(makeSnapshot(list, filter));
        main->post([this, number, queue, shared, list, snapshot = std::move(snapshot)]() mutable {
            if (shared->newest != number) return;
            list_ = list;
            std::swap(snapshot_, *snapshot);
            queue->post([old = std::move(snapshot)] {});
            changed.emit();
        });
    });
}

} // namespace tidwen
