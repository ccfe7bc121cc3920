#include "sweep/leftover_tree.h"

#include "base/byte_count.h"
#include "base/text.h"

#include <algorithm>
#include <numeric>

namespace tidwen {

LeftoverList::LeftoverList(std::vector<Trace> traces, std::string locale)
    : traces_(std::move(traces)), locale_(std::move(locale)) {
    entries_.reserve(traces_.size());
    sizeTexts_.reserve(traces_.size()); // rows point into it
    for (const auto& trace : traces_) {
        const auto name = searchForm(trace.displayName);
        sizeTexts_.push_back(trace.sizeBytes ? formatByteCount(*trace.sizeBytes, locale_) : std::string());
        entries_.push_back({.row = {&trace, trace.displayName, sizeTexts_.back()},
                            .nameOffset = names_.size(),
                            .nameLength = name.size(),
                            .bytes = trace.sizeBytes,
                            .risk = trace.risk,
                            .category = trace.category,
                            .isManual = trace.reversibility == Reversibility::manualOnly});
        names_ += name;
        ++sums_.byRisk[static_cast<std::size_t>(trace.risk)];
        ++sums_.byCategory[static_cast<std::size_t>(trace.category)];
        sums_.bytes += trace.sizeBytes.value_or(0);
    }
    sort();
}

void LeftoverList::sort() {
    std::vector<std::string> keys;
    keys.reserve(traces_.size());
    for (const auto& trace : traces_)
        keys.push_back(displayOrderKey(trace.displayName, locale_));
    byName_.resize(traces_.size());
    std::iota(byName_.begin(), byName_.end(), 0u);
    std::stable_sort(byName_.begin(), byName_.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    bySize_ = byName_; // stable: equal sizes stay in the order of their names
    std::stable_sort(bySize_.begin(), bySize_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return entries_[a].bytes.value_or(-1) > entries_[b].bytes.value_or(-1);
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
        // Judged in the order in which they lie in memory, and only then looked at in that of the rows.
        std::vector<bool> passing;
        passing.reserve(list_.entries_.size());
        for (const auto& entry : list_.entries_)
            passing.push_back(entry.isManual || passes(entry));
        const auto& order = filter_.order == LeftoverFilter::Order::name ? list_.byName_ : list_.bySize_;
        for (const auto index : order)
            if (passing[index]) add(tree, list_.entries_[index]);
        for (std::size_t risk = 0; risk < groups_.size(); ++risk)
            close(tree, risk);
        tree.totalSizeText = formatByteCount(tree.totalBytes, list_.locale_);
    }

  private:
    struct Bucket {
        LeftoverGroup group;
        bool hasSize = false;
    };

    bool passes(const LeftoverList::Entry& entry) const {
        if (!filter_.risks.empty() && !filter_.risks.contains(entry.risk)) return false;
        if (filter_.category && entry.category != *filter_.category) return false;
        if (entry.bytes && *entry.bytes < floor_) return false;
        return sought_.empty()
               || std::string_view(list_.names_).substr(entry.nameOffset, entry.nameLength).find(sought_)
                      != std::string_view::npos;
    }

    void add(LeftoverTree& tree, const LeftoverList::Entry& entry) {
        if (entry.isManual) {
            tree.manual.push_back(entry.row.trace);
            return;
        }
        auto& bucket =
            groups_[static_cast<std::size_t>(entry.risk)][static_cast<std::size_t>(entry.category)];
        bucket.group.rows.push_back(entry.row);
        if (!entry.bytes) return;
        bucket.group.bytes += *entry.bytes;
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
