#pragma once

#include "app/models/find_row.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <QAbstractItemModel>
#include <cstddef>

namespace tidwen {

/// A tree of finds to choose from: what those of a review and of a sweep have in common. Boxes show what the
/// flow has selected, and ask it for changes.
class FindTree : public QAbstractItemModel {
  public:
    using Kind = FindRow::Kind;
    using enum FindRow::Role;

    /// The trace of a row; null for everything above.
    virtual const Trace* trace(const QModelIndex& index) const = 0;
    /// Chooses everything below, or nothing of it.
    virtual void toggle(const QModelIndex& index) = 0;
    /// How many are chosen that a search or a filter hides.
    std::size_t hiddenChosen() const;

    int columnCount(const QModelIndex& /*above*/ = {}) const final { return 1; }
    bool hasChildren(const QModelIndex& above = {}) const final { return rowCount(above) > 0; }
    bool setData(const QModelIndex& index, const QVariant& value, int role) final;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  protected:
    /// What is passed outlives it.
    FindTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user);

    /// How much of what lies below a heading is chosen.
    struct Chosen {
        std::size_t count = 0, of = 0;

        Qt::CheckState box() const;
    };
    virtual std::size_t shownChosen() const = 0;
    QString tierTitle(TraceRisk tier) const;
    QString categoryTitle(TraceCategory category) const;
    QString chosenWords(const Chosen& chosen) const;
    /// Where it lies; of what is no file, why it is here.
    QString placeOrReason(const Trace& trace) const;

    RemovalFlowModel& flow_;
    const Texts& texts_;
    UserEnvironment user_;
};

} // namespace tidwen
