#pragma once

#include "base/list_change.h"
#include "base/observable.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/home_grid_model.h"

#include <QAbstractListModel>

namespace tidwen {

/// The home grid as an item model. A heading is a row that can be neither chosen nor made current.
class HomeList final : public QAbstractListModel {
  public:
    enum ItemRole { second = Qt::UserRole, isHeading, bundleID, bundle, isProtected, tags };

    /// `grid`, `texts` and `clock` outlive it.
    HomeList(HomeGridModel& grid, const Texts& texts, const Clock& clock);

    const HomeRow& row(const QModelIndex& index) const { return grid_.rows.rows()[rowNumber(index)]; }
    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    static std::size_t rowNumber(const QModelIndex& index) { return static_cast<std::size_t>(index.row()); }
    QString secondLine(const HomeRow& row) const;
    QString spoken(const HomeRow& row) const;
    void begin(const RowChange& change);
    void end(const RowChange& change);

    HomeGridModel& grid_;
    const Texts& texts_;
    const Clock& clock_;
    Subscription willChange_, changed_;
};

} // namespace tidwen
