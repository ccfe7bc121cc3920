#pragma once

#include "base/observable.h"

#include <QListView>
#include <utility>
#include <vector>

namespace tidwen {

class AppIcons;

/// Cards in groups with headings. A list view whose geometry is our own arithmetic: it keeps the toolkit's
/// selection, delegate and accessibility, and costs no layout per card.
class CardView final : public QListView {
  public:
    /// `icons` outlives it.
    explicit CardView(AppIcons& icons);

    void setModel(QAbstractItemModel* model) override;
    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint) override;
    void reset() override;
    void doItemsLayout() override;

  protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void setSelection(const QRect& area, QItemSelectionModel::SelectionFlags flags) override;
    /// What is painted anew when cards are chosen or not any more.
    QRegion visualRegionForSelection(const QItemSelection& /*selection*/) const override {
        return viewport()->rect();
    }
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void updateGeometries() override { needPlacing(); }
    void rowsInserted(const QModelIndex& above, int first, int last) override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;
    void scrollContentsBy(int dx, int dy) override { viewport()->scroll(dx, dy); }
    int verticalOffset() const override;
    int horizontalOffset() const override { return 0; }

  private:
    struct Group {
        int first; ///< row of its first card; the heading is the one before
        int count;
        int lines;
        int top;
    };

    /// Rows come and go in many steps, and are placed once.
    void needPlacing();
    /// Where everything stands, as of now.
    const std::vector<Group>& groups() const;
    void place() const;
    QRect cell(const Group& group, int number) const;
    /// The numbers of the cards whose lines meet these pixels of the viewport, first and past the last; an
    /// end before the first when not even its heading does.
    std::pair<int, int> cardsBetween(const Group& group, int top, int bottom) const;
    const Group* groupOfRow(int row) const;

    mutable std::vector<Group> groups_; ///< these three: see `place`
    mutable bool isPlaced_ = false;
    mutable int columns_ = 1;
    Subscription following_;
};

} // namespace tidwen
