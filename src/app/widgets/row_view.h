#pragma once

#include "app/widgets/row_delegate.h"

#include <QTreeView>
#include <functional>

namespace tidwen {

/// A tree or list whose delegate paints whole rows, with boxes and other parts to click. Rows differ in
/// height and are many, so nothing is laid out anew for what changes no height.
class RowView final : public QTreeView {
  public:
    explicit RowView(RowDelegate* delegate, QWidget* parent = nullptr); ///< takes the delegate over

    /// The control of a row was clicked.
    std::function<void(const QModelIndex&)> onControl;

    /// Opens everything that has rows below it. Rows below one are all leaves or all none, so the leaves,
    /// which may be 100,000, are not asked.
    void openAll();
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void initViewItemOption(QStyleOptionViewItem* option) const override;
    void drawBranches(QPainter* /*painter*/, const QRect& /*rect*/,
                      const QModelIndex& /*index*/) const override {}
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;

  private:
    bool click(const QModelIndex& index, const QPoint& point);
    void toggleBox(const QModelIndex& index);

    RowDelegate* delegate_;
};

} // namespace tidwen
