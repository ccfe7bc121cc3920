#pragma once

#include "base/byte_count.h"
#include "base/byte_sum.h"
#include "base/text_list.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The tiers in display order.
inline constexpr std::array allTraceRisks = {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive};

/// One row of the tree. Points into the list that the tree holds.
struct LeftoverRow {
    const Trace* trace = nullptr;
    std::string_view title;
    std::string_view sizeText; ///< empty for an item without a size
    std::uint32_t number = 0;  ///< in the list, in the order of its traces
};

/// Traces kept alive by a shared owner as long as they are needed.
struct SharedTraces {
    std::vector<std::shared_ptr<const void>> owners = {};
    std::vector<const Trace*> traces = {};

    SharedTraces() = default;
    explicit SharedTraces(std::vector<Trace> own) { add(std::move(own)); }
    void add(std::vector<Trace> own);
};

/// Leftovers prepared for filtering on every key stroke: names in search form, sizes as text, both orders and
/// the sums are computed once, on all cores. Immutable; shared by the trees built from it.
class LeftoverList {
  public:
    /// In the language that `texts` speak now.
    explicit LeftoverList(SharedTraces traces, const Texts& texts = Texts());
    explicit LeftoverList(std::vector<Trace> traces, const Texts& texts = Texts())
        : LeftoverList(SharedTraces(std::move(traces)), texts) {}
    LeftoverList(const LeftoverList&) = delete;
    LeftoverList& operator=(const LeftoverList&) = delete;

    /// Of all traces, regardless of the filter.
    struct Sums {
        std::array<int, allTraceRisks.size()> byRisk = {};
        std::array<int, allTraceCategories.size()> byCategory = {};
        ByteSum size = {};
    };

    const SharedTraces& shared() const { return shared_; }
    const std::vector<const Trace*>& traces() const { return shared_.traces; }
    const std::set<Uuid>& ids() const { return ids_; } ///< of all traces, for selecting them at once
    const Sums& sums() const { return sums_; }
    const Texts& texts() const { return texts_; } ///< of the language in which it is sorted and described
    std::string language() const { return texts_.language(); }

  private:
    friend class LeftoverTreeBuilder;

    /// What filter and row need of a trace, stored contiguously: the traces themselves are scattered in
    /// memory.
    struct Entry {
        LeftoverRow row;
        std::string_view name; ///< in search form, points into `names_`
        std::optional<std::int64_t> bytes;
        TraceRisk risk;
        TraceCategory category;
        bool isManual;
    };

    void describe();
    std::string_view sizeTextOf(const Trace& trace);
    void sort();

    SharedTraces shared_;
    Texts texts_;    ///< a copy: those of the program may speak another language meanwhile
    TextList names_; ///< in search form
    ByteCountTexts sizeTexts_;
    std::deque<std::string> partialSizeTexts_;
    std::vector<Entry> entries_;                 ///< in the order of the traces
    std::vector<std::uint32_t> byName_, bySize_; ///< indices, sorted by name and by size
    std::set<Uuid> ids_;
    Sums sums_;
};

struct LeftoverGroup {
    TraceCategory category = TraceCategory::supportFiles;
    std::vector<LeftoverRow> rows;
    ByteSum size = {};
    std::optional<std::string> sizeText; ///< absent when no row has a size

    std::set<Uuid> ids() const; ///< for selecting the whole group at once
};

struct LeftoverTier {
    TraceRisk risk = TraceRisk::safe;
    std::vector<LeftoverGroup> groups; ///< in the order of the categories, none empty
    ByteSum size = {};
    std::optional<std::string> sizeText;
    int count = 0;

    std::set<Uuid> ids() const;
};

/// Risk tiers, each with groups by category, each with rows. Tiers without a match are left out.
struct LeftoverTree {
    std::shared_ptr<const LeftoverList> list; ///< what the rows point into
    std::vector<LeftoverTier> tiers;
    std::vector<const Trace*> manual; ///< what the user must remove by hand, regardless of the filter
    std::array<int, allTraceRisks.size()> counts = {}; ///< of matching traces, by risk
    int totalCount = 0;
    std::int64_t totalBytes = 0;
    std::string totalSizeText;
};

/// The text of the line above a filtered list.
struct LeftoverFilterSummary {
    int shown = 0;
    int total = 0;
    std::string sizeText;
};

LeftoverTree buildTree(std::shared_ptr<const LeftoverList> list, const LeftoverFilter& filter);
LeftoverTree buildTree(std::vector<Trace> traces, const LeftoverFilter& filter);

LeftoverFilterSummary summarize(const LeftoverTree& tree);

} // namespace tidwen
