#pragma once

#include <QStyledItemDelegate>

namespace tidwen {

class AppIcons;

/// Paints past removals and the headings above them.
class HistoryDelegate final : public QStyledItemDelegate {
  public:
    /// `icons` outlives it.
    HistoryDelegate(AppIcons& icons, QObject* parent) : QStyledItemDelegate(parent), icons_(icons) {}
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  private:
    AppIcons& icons_;
};

} // namespace tidwen
