#pragma once

#include <QStyledItemDelegate>

namespace tidwen {

class AppIcons;

QSize cardSize();
int headingHeight();

/// Paints one application or heading of the home grid.
class CardDelegate final : public QStyledItemDelegate {
  public:
    /// `icons` outlives it.
    CardDelegate(AppIcons& icons, QObject* parent) : QStyledItemDelegate(parent), icons_(icons) {}
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  private:
    AppIcons& icons_;
};

} // namespace tidwen
