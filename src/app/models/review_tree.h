#pragma once

#include "app/models/find_row.h"
#include "base/byte_sum.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_tree.h"

#include <QAbstractItemModel>
#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// What was found, to choose from: applications (when there are several), tiers, groups, rows. Boxes show
/// what the flow has selected, and ask it for changes.
class ReviewTree final : public QAbstractItemModel {
  public:
    using Kind = FindRow::Kind;
    using enum FindRow::Role;

    /// What is passed outlives it.
    ReviewTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user);

    /// The trees of the flow are others now.
    void rebuild();
    /// The selection or the mode is another one.
    void refresh();
    /// Leaves out what is not chosen now, until it is asked for again.
    void showOnlyChosen(bool isOn);
    bool showsOnlyChosen() const { return isOnlyChosen_; }
    /// The trace of a row; null for everything above.
    const Trace* trace(const QModelIndex& index) const;
    /// Chooses everything below, or nothing of it.
    void toggle(const QModelIndex& index);

    QModelIndex index(int row, int column, const QModelIndex& above = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& above = {}) const override;
    int columnCount(const QModelIndex& /*above*/ = {}) const override { return 1; }
    bool hasChildren(const QModelIndex& above = {}) const override { return rowCount(above) > 0; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct Node {
        Kind kind = Kind::item;
        int parent = -1;
        int row = 0; ///< among those of its parent
        std::vector<int> children = {};
        const Trace* trace = nullptr;
        std::string title = {};
        TraceRisk risk = TraceRisk::safe;
        TraceCategory category = TraceCategory::supportFiles;
        std::string sizeText = {};
        int selected = 0; ///< of what lies below and can be chosen
        int eligible = 0;
        ByteSum size = {}; ///< of what can be chosen
    };

    int add(int parent, Node node);
    void addTree(int parent, const LeftoverTree& tree);
    void count();
    const Node& node(const QModelIndex& index) const {
        return nodes_[static_cast<std::size_t>(index.internalId())];
    }
    void collect(const Node& node, std::vector<Uuid>& ids) const;
    QVariant traceData(const Node& node, int role) const;
    QVariant checkState(const Node& node) const;
    QString spoken(const QModelIndex& index) const;

    RemovalFlowModel& flow_;
    const Texts& texts_;
    UserEnvironment user_;
    bool isOnlyChosen_ = false;
    std::vector<Node> nodes_;
    std::vector<int> roots_;
    std::int64_t largest_ = 1; ///< bytes of the largest item, at which bars are full
};

} // namespace tidwen
