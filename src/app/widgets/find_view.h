#pragma once

#include <QTreeView>

namespace tidwen {

/// The tree of what was found. Rows differ in height and are many, so nothing is laid out anew for what
/// changes no height.
class FindView final : public QTreeView {
  public:
    explicit FindView(QWidget* parent = nullptr);

    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void drawBranches(QPainter* /*painter*/, const QRect& /*rect*/,
                      const QModelIndex& /*index*/) const override {}
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;

  private:
    void toggleBox(const QModelIndex& index);
};

} // namespace tidwen
