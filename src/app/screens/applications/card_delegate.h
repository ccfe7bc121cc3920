#pragma once

#include <QStyledItemDelegate>

namespace tidwen {

QSize cardSize();
int headingHeight();

/// Paints one application or heading of the home grid.
class CardDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

} // namespace tidwen
