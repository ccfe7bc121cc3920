#include "sweep/sweep_state.h"

#include "base/byte_count.h"

#include <atomic>

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

std::set<Uuid> SweepState::allIDs() const {
    std::set<Uuid> ids;
    for (const auto& trace : traces_)
        ids.insert(trace.id);
    return ids;
}

void SweepState::begin(Timestamp now) {
    startedAt_ = now;
    traces_.clear();
    known_.clear();
    rebuild(true);
}

void SweepState::add(const std::vector<Trace>& found) {
    for (const auto& trace : found)
        if (known_.insert(trace.displayName).second) traces_.push_back(trace);
    rebuild(true);
}

void SweepState::finish(std::vector<Trace> traces) {
    traces_ = std::move(traces);
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
    queue_.post([this, number, main = &main_, shared = shared_, list = list_,
                 traces = list_ ? std::vector<Trace>() : traces_, filter = filter_,
                 locale = locale_]() mutable {
        if (shared->newest != number) return;
        if (!list) list = std::make_shared<const LeftoverList>(std::move(traces), locale);
        auto snapshot = makeSnapshot(list, filter);
        main->post([this, number, shared, list, snapshot = std::move(snapshot)]() mutable {
            if (shared->newest != number) return;
            list_ = std::move(list);
            snapshot_ = std::move(snapshot);
            changed.emit();
        });
    });
}

} // namespace tidwen
