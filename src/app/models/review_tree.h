#pragma once

#include "app/models/find_tree.h"
#include "base/byte_sum.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_tree.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// What was found, to choose from: applications (when there are several), tiers, groups, rows.
class ReviewTree final : public FindTree {
  public:
    /// What is passed outlives it.
    ReviewTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user);

    /// The trees of the flow are others now.
    void rebuild();
    /// The selection or the mode is another one.
    void refresh();
    /// Leaves out what is not chosen now, until it is asked for again.
    void showOnlyChosen(bool isOn);
    bool showsOnlyChosen() const { return isOnlyChosen_; }
    const Trace* trace(const QModelIndex& index) const override;
    void toggle(const QModelIndex& index) override;

    QModelIndex index(int row, int column, const QModelIndex& above = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::size_t shownChosen() const override;
    struct Node {
        Kind kind = Kind::item;
        int parent = -1;
        int row = 0; ///< among those of its parent
        std::vector<int> children = {};
        const Trace* trace = nullptr;
        QString title = {};
        TraceRisk risk = TraceRisk::safe;
        TraceCategory category = TraceCategory::supportFiles;
        std::string sizeText = {};
        Chosen chosen = {}; ///< of what lies below and can be chosen
        ByteSum size = {};  ///< of that
    };

    int add(int parent, Node node);
    /// Of one group of findings.
    void addTree(int parent, std::size_t group, const LeftoverTree& tree);
    void count();
    const Node& node(const QModelIndex& index) const {
        return nodes_[static_cast<std::size_t>(index.internalId())];
    }
    void collect(const Node& node, std::vector<Uuid>& ids) const;
    QVariant traceData(const Node& node, int role) const;
    QVariant checkState(const Node& node) const;
    QString spoken(const QModelIndex& index) const;

    bool isOnlyChosen_ = false;
    std::vector<Node> nodes_;
    std::vector<int> roots_;
    std::int64_t largest_ = 1; ///< bytes of the largest item, at which bars are full
};

} // namespace tidwen
