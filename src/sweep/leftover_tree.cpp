#include "sweep/leftover_tree.h"

#include "base/parallel.h"
#include "base/text.h"
#include "base/uuid.h"
#include "posix/posix_process_runner.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <numeric>

namespace tidwen {

namespace {

/// The numbers from 0, sorted by a strict total order; both halves are sorted in parallel.
template<class IsBefore>
std::vector<std::uint32_t> sorted(std::size_t count, IsBefore isBefore) {
    std::vector<std::uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0u);
    const auto middle = order.begin() + static_cast<std::ptrdiff_t>(count / 2);
    parallelFor(2, [&](std::size_t half) {
        half == 0 ? std::sort(order.begin(), middle, isBefore) : std::sort(middle, order.end(), isBefore);
    });
    std::inplace_merge(order.begin(), middle, order.end(), isBefore);
    return order;
}

/// Inserting one by one would search the position of each.
std::set<Uuid> setOf(std::vector<Uuid> ids) {
    std::sort(ids.begin(), ids.end());
    return std::set<Uuid>(ids.begin(), ids.end());
}

void addIDs(std::vector<Uuid>& ids, const LeftoverGroup& group) {
    for (const auto& row : group.rows)
        ids.push_back(row.trace->id);
}

} // namespace

void SharedTraces::add(std::vector<Trace> own) {
    const auto owner = std::make_shared<const std::vector<Trace>>(std::move(own));
    traces.reserve(traces.size() + owner->size());
    for (const auto& trace : *owner)
        traces.push_back(&trace);
    owners.push_back(owner);
}

LeftoverList::LeftoverList(SharedTraces traces, const Texts& texts)
    : shared_(std::move(traces)), texts_(texts), sizeTexts_(texts_.language()) {
    describe();
    sort();
}

std::string_view LeftoverList::sizeTextOf(const Trace& trace) {
    if (!trace.sizeBytes) return {};
    if (!trace.isSizePartial) return sizeTexts_.text(*trace.sizeBytes);
    return partialSizeTexts_.emplace_back(sizeText(*trace.sizeBytes, true, texts_));
}

void LeftoverList::describe() {
    const auto& traces = shared_.traces;
    names_ = TextList(traces.size(), [&](std::size_t i) { return folded(traces[i]->displayName); });
    entries_.reserve(traces.size());
    std::vector<Uuid> ids;
    ids.reserve(traces.size());
    for (std::size_t i = 0; i < traces.size(); ++i) {
        const auto& trace = *traces[i];
        entries_.push_back(
            {.row = {&trace, trace.displayName, sizeTextOf(trace), static_cast<std::uint32_t>(i)},
             .name = names_[i],
             .bytes = trace.sizeBytes,
             .risk = trace.risk,
             .category = trace.category,
             .isManual = trace.reversibility == Reversibility::manualOnly});
        ids.push_back(trace.id);
        ++sums_.byRisk[static_cast<std::size_t>(trace.risk)];
        ++sums_.byCategory[static_cast<std::size_t>(trace.category)];
        sums_.size.add(trace.sizeBytes, trace.isSizePartial);
    }
    ids_ = setOf(std::move(ids));
}

void LeftoverList::sort() {
    const auto locale = language();
    const TextList keys(entries_.size(), [&](std::size_t i) {
        return displayOrderKey(shared_.traces[i]->displayName, locale);
    });
    byName_ = sorted(entries_.size(), [&](std::uint32_t a, std::uint32_t b) {
        const int order = keys[a].compare(keys[b]);
        return order != 0 ? order < 0 : a < b;
    });
    std::vector<std::uint32_t> place(byName_.size()); // equal sizes stay in name order
    for (std::uint32_t i = 0; i < byName_.size(); ++i)
        place[byName_[i]] = i;
    bySize_ = sorted(entries_.size(), [&](std::uint32_t a, std::uint32_t b) {
        const auto sizeA = entries_[a].bytes.value_or(-1), sizeB = entries_[b].bytes.value_or(-1);
        return sizeA != sizeB ? sizeA > sizeB : place[a] < place[b];
    });
}

/// Sorts the matching traces into groups. The list is already sorted, so one pass suffices.
class LeftoverTreeBuilder {
  public:
    LeftoverTreeBuilder(const LeftoverList& list, const LeftoverFilter& filter)
        : list_(list),
          filter_(filter),
          sought_(folded(trimmed(filter.query))),
          floor_(minimumBytes(filter.floor)) {}

    void fill(LeftoverTree& tree) {
        // Filtered in memory order first; only matches are then visited in display order.
        std::vector<bool> passing;
        passing.reserve(list_.entries_.size());
        for (const auto& entry : list_.entries_)
            passing.push_back(entry.isManual || passes(entry));
        const auto& order = filter_.order == LeftoverFilter::Order::name ? list_.byName_ : list_.bySize_;
        for (const auto index : order)
            if (passing[index]) add(tree, list_.entries_[index]);
        for (std::size_t risk = 0; risk < groups_.size(); ++risk)
            close(tree, risk);
        tree.totalBytes = total_.bytes;
        tree.totalSizeText = sizeText(total_, list_.texts_);
    }

  private:
    std::optional<std::string> textOf(const ByteSum& sum) const {
        return sum.isKnown ? std::optional(sizeText(sum, list_.texts_)) : std::nullopt;
    }

    bool passes(const LeftoverList::Entry& entry) const {
        if (!filter_.risks.empty() && !filter_.risks.contains(entry.risk)) return false;
        if (filter_.category && entry.category != *filter_.category) return false;
        if (entry.bytes && *entry.bytes < floor_) return false;
        return sought_.empty() || entry.name.find(sought_) != std::string_view::npos;
    }

    void add(LeftoverTree& tree, const LeftoverList::Entry& entry) {
        if (entry.isManual) {
            tree.manual.push_back(entry.row.trace);
            return;
        }
        auto& group = groups_[static_cast<std::size_t>(entry.risk)][static_cast<std::size_t>(entry.category)];
        group.rows.push_back(entry.row);
        group.size.add(entry.bytes, entry.row.trace->isSizePartial);
    }

    void close(LeftoverTree& tree, std::size_t risk) {
        LeftoverTier tier;
        tier.risk = allTraceRisks[risk];
        for (const auto category : allTraceCategories) {
            auto& group = groups_[risk][static_cast<std::size_t>(category)];
            if (group.rows.empty()) continue;
            group.category = category;
            group.sizeText = textOf(group.size);
            tier.count += static_cast<int>(group.rows.size());
            tier.size.add(group.size);
            tier.groups.push_back(std::move(group));
        }
        tree.counts[risk] = tier.count;
        tree.totalCount += tier.count;
        total_.add(tier.size);
        if (tier.groups.empty()) return;
        tier.sizeText = textOf(tier.size);
        tree.tiers.push_back(std::move(tier));
    }

    const LeftoverList& list_;
    const LeftoverFilter& filter_;
    std::string sought_;
    std::int64_t floor_;
    ByteSum total_;
    std::array<std::array<LeftoverGroup, allTraceCategories.size()>, allTraceRisks.size()> groups_;
};

std::set<Uuid> LeftoverGroup::ids() const {
    std::vector<Uuid> all;
    addIDs(all, *this);
    return setOf(std::move(all));
}

std::set<Uuid> LeftoverTier::ids() const {
    std::vector<Uuid> all;
    for (const auto& group : groups)
        addIDs(all, group);
    return setOf(std::move(all));
}

LeftoverTree buildTree(std::shared_ptr<const LeftoverList> list, const LeftoverFilter& filter) {
    LeftoverTree tree;
    tree.list = std::move(list);
    LeftoverTreeBuilder(*tree.list, filter).fill(tree);
    return tree;
}

LeftoverTree buildTree(std::vector<Trace> traces, const LeftoverFilter& filter) {
    return buildTree(std::make_shared<const LeftoverList>(std::move(traces)), filter);
}

LeftoverFilterSummary summarize(const LeftoverTree& tree) {
    const auto total = tree.list ? tree.list->traces().size() - tree.manual.size() : 0;
    return {tree.totalCount, static_cast<int>(total), tree.totalSizeText};
}

} // namespace tidwen
