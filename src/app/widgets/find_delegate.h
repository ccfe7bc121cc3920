#pragma once

#include "app/widgets/row_delegate.h"

namespace tidwen {

/// Paints tiers, groups and rows of a tree of finds. Headings are lower than finds, but not in a view with
/// uniform heights.
class FindDelegate final : public RowDelegate {
  public:
    using RowDelegate::RowDelegate;

    Places placesIn(const QRect& row, const QModelIndex& index, Qt::LayoutDirection direction) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

} // namespace tidwen
