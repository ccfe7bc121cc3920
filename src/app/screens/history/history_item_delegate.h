#pragma once

#include <QStyledItemDelegate>

namespace tidwen {

/// Paints an item of a run: its name, the folder it came from and, at the far side, where it is. Never wider
/// than its list.
class HistoryItemDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

} // namespace tidwen
