#pragma once

#include "app/models/find_tree.h"
#include "base/list_change.h"
#include "base/observable.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "platform/user_environment.h"
#include "removal/findings.h"
#include "removal/removal_flow_model.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/sweep_state.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tidwen {

/// What a sweep found, to choose from: tiers, groups, rows. Follows the rows of the sweep one by one.
class SweepTree final : public FindTree {
  public:
    /// What is passed outlives it.
    SweepTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user);

    /// The selection or the findings are others.
    void refresh();
    const Trace* trace(const QModelIndex& index) const override;
    void toggle(const QModelIndex& index) override;
    /// The shown finds of one tier.
    std::vector<Uuid> idsOf(TraceRisk wanted) const;

    QModelIndex index(int row, int column, const QModelIndex& above = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct Group {
        TraceCategory category = TraceCategory::supportFiles;
        std::vector<const Trace*> items = {};
    };
    struct Tier {
        SweepRow heading = {};
        std::vector<Group> groups = {};
        std::vector<std::size_t> numbers = {}; ///< of its items, among all findings
        std::size_t selected = 0;
    };
    /// Where a row stands. What is above it is known by kind and not by number, so that what comes and goes
    /// before it changes no identifier.
    struct Place {
        Kind kind = Kind::tier;
        std::size_t tier = 0, group = 0, item = 0;
    };

    std::size_t shownChosen() const override;
    Place place(const QModelIndex& index) const;
    QModelIndex tierIndex(std::size_t tier) const;
    QModelIndex groupIndex(std::size_t tier, std::size_t group) const;
    std::size_t tierOf(TraceRisk sought) const; ///< where it is, or would be
    std::size_t groupOf(std::size_t tier, TraceCategory category) const;
    /// The number of a group's first item among the rows of the sweep.
    std::size_t firstRow(std::size_t tier, std::size_t group) const;
    /// The end of the run of items of one group that begins at `first`.
    std::size_t runEnd(std::size_t first, std::size_t end) const;
    const std::vector<SweepRow>& rows() const { return flow_.sweep().rows.rows(); }

    void willChange(const RowChange& change);
    void changed(const RowChange& change);
    void removeFinds(std::size_t first, std::size_t end);
    void insertFinds(std::size_t first, std::size_t end);
    void replaceRows(std::size_t first, std::size_t end);
    void rebuild();
    /// Who owns the finds of the list, and which number they have among all findings.
    void learnFinds();
    void numberFinds();
    void findOwners();
    const FoundGroup* owner(const Trace& trace) const;
    QString secondLine(const Trace& trace) const;
    QVariant tierData(const Tier& tier, int role) const;

    std::vector<Tier> tiers_;
    std::int64_t largest_ = 1;            ///< bytes of the largest find, shown or not, at which bars are full
    std::weak_ptr<const Findings> known_; ///< of which the owners and numbers are
    std::weak_ptr<const LeftoverList> knownList_;     ///< of which the numbers are
    std::vector<std::optional<std::size_t>> numbers_; ///< of the list's finds, among all findings
    bool areRowsNew_ = true;                          ///< since the finds were numbered
    /// The groups of the findings, by where their traces begin in memory.
    std::vector<std::pair<const Trace*, const FoundGroup*>> owners_;
    Subscription willChange_, changed_;
};

} // namespace tidwen
