#include "sweep/leftover_tree.h"

#include "base/byte_count.h"
#include "base/text.h"

#include <algorithm>
#include <numeric>

namespace tidwen {

LeftoverList::LeftoverList(std::vector<Trace> traces, std::string locale)
    : traces_(std::move(traces)), locale_(std::move(locale)) {
    for (const auto& trace : traces_) {
        const auto name = searchForm(trace.displayName);
        nameOf_.push_back({names_.size(), name.size()});
        names_ += name;
        sizeTexts_.push_back(trace.sizeBytes ? formatByteCount(*trace.sizeBytes, locale_) : std::string());
    }
    byName_.resize(traces_.size());
    std::iota(byName_.begin(), byName_.end(), 0u);
    std::stable_sort(byName_.begin(), byName_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return compareForDisplay(traces_[a].displayName, traces_[b].displayName, locale_) < 0;
    });
    bySize_ = byName_; // stable: equal sizes stay in the order of their names
    std::stable_sort(bySize_.begin(), bySize_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return traces_[a].sizeBytes.value_or(-1) > traces_[b].sizeBytes.value_or(-1);
    });
}

/// Sorts the passing traces into their groups. The list is already in order, so one pass over it will do.
class LeftoverTreeBuilder {
  public:
    LeftoverTreeBuilder(const LeftoverList& list, const LeftoverFilter& filter)
        : list_(list),
          filter_(filter),
          sought_(searchForm(trimmed(filter.query))),
          floor_(minimumBytes(filter.floor)) {}

    void fill(LeftoverTree& tree) {
        const auto& order = filter_.order == LeftoverFilter::Order::name ? list_.byName_ : list_.bySize_;
        for (const auto index : order)
            add(tree, index);
        for (std::size_t risk = 0; risk < groups_.size(); ++risk)
            close(tree, risk);
        tree.totalSizeText = formatByteCount(tree.totalBytes, list_.locale_);
    }

  private:
    struct Bucket {
        LeftoverGroup group;
        bool hasSize = false;
    };

    bool passes(const Trace& trace, std::uint32_t index) const {
        if (!filter_.risks.empty() && !filter_.risks.contains(trace.risk)) return false;
        if (filter_.category && trace.category != *filter_.category) return false;
        if (trace.sizeBytes && *trace.sizeBytes < floor_) return false;
        if (sought_.empty()) return true;
        const auto& name = list_.nameOf_[index];
        return std::string_view(list_.names_).substr(name.offset, name.length).find(sought_)
               != std::string_view::npos;
    }

    void add(LeftoverTree& tree, std::uint32_t index) {
        const auto& trace = list_.traces_[index];
        if (trace.reversibility == Reversibility::manualOnly) {
            tree.manual.push_back(&trace);
            return;
        }
        if (!passes(trace, index)) return;
        auto& bucket =
            groups_[static_cast<std::size_t>(trace.risk)][static_cast<std::size_t>(trace.category)];
        bucket.group.rows.push_back({&trace, trace.displayName, list_.sizeTexts_[index]});
        if (!trace.sizeBytes) return;
        bucket.group.bytes += *trace.sizeBytes;
        bucket.hasSize = true;
    }

    void close(LeftoverTree& tree, std::size_t risk) {
        LeftoverTier tier;
        tier.risk = allTraceRisks[risk];
        bool hasSize = false;
        for (const auto category : allTraceCategories) {
            auto& [group, groupHasSize] = groups_[risk][static_cast<std::size_t>(category)];
            if (group.rows.empty()) continue;
            group.category = category;
            if (groupHasSize) group.sizeText = formatByteCount(group.bytes, list_.locale_);
            hasSize |= groupHasSize;
            tier.count += static_cast<int>(group.rows.size());
            tier.bytes += group.bytes;
            tier.groups.push_back(std::move(group));
        }
        tree.counts[risk] = tier.count;
        tree.totalCount += tier.count;
        tree.totalBytes += tier.bytes;
        if (tier.groups.empty()) return;
        if (hasSize) tier.sizeText = formatByteCount(tier.bytes, list_.locale_);
        tree.tiers.push_back(std::move(tier));
    }

    const LeftoverList& list_;
    const LeftoverFilter& filter_;
    std::string sought_;
    std::int64_t floor_;
    std::array<std::array<Bucket, allTraceCategories.size()>, allTraceRisks.size()> groups_;
};

std::set<Uuid> LeftoverGroup::ids() const {
    std::set<Uuid> result;
    for (const auto& row : rows)
        result.insert(row.trace->id);
    return result;
}

std::set<Uuid> LeftoverTier::ids() const {
    std::set<Uuid> result;
    for (const auto& group : groups)
        result.merge(group.ids());
    return result;
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
