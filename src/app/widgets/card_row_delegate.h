#pragma once

#include "app/widgets/row_delegate.h"
#include "base/observable.h"

namespace tidwen {

class AppIcons;

/// Paints the rows of one section as one card, under the section's heading.
class CardRowDelegate final : public RowDelegate {
  public:
    enum class Boxes { none, leading };
    /// `icons`, of the applications that rows name, outlive it.
    CardRowDelegate(Boxes boxes, AppIcons& icons);

    bool hasCards() const override { return true; }
    bool growsWhenNarrow() const override { return true; }
    Places placesIn(const QRect& row, const QModelIndex& index, Qt::LayoutDirection direction) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  private:
    Boxes boxes_;
    AppIcons& icons_;
    Subscription following_;
};

} // namespace tidwen
