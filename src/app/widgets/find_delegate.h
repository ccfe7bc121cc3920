#pragma once

#include <QStyledItemDelegate>

namespace tidwen {

/// Paints tiers, groups and rows of a tree of finds.
class FindDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Where the parts of a row lie that can be clicked; empty where there is none.
    struct Places {
        QRect arrow;
        QRect box;
    };
    static Places placesIn(const QRect& row, const QModelIndex& index, Qt::LayoutDirection direction);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

} // namespace tidwen
