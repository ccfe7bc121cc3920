#pragma once

#include "app/widgets/row_delegate.h"

namespace tidwen {

/// Paints the rows of one section as one card, under the section's heading.
class CardRowDelegate final : public RowDelegate {
  public:
    enum class Boxes { none, leading };
    CardRowDelegate(Boxes boxes, QObject* parent) : RowDelegate(parent), boxes_(boxes) {}

    bool hasCards() const override { return true; }
    bool growsWhenNarrow() const override { return true; }
    Places placesIn(const QRect& row, const QModelIndex& index, Qt::LayoutDirection direction) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  private:
    Boxes boxes_;
};

} // namespace tidwen
