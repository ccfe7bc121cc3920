#include "app/screens/review/review_view.h"

#include "app/models/review_tree.h"
#include "app/screens/review/review_delegate.h"
#include "app/style/metrics.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace tidwen {

ReviewView::ReviewView(QWidget* parent) : QTreeView(parent) {
    setItemDelegate(new ReviewDelegate(this));
    setHeaderHidden(true);
    setIndentation(0);
    setRootIsDecorated(false);
    setItemsExpandable(true);
    setExpandsOnDoubleClick(false);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setEditTriggers(NoEditTriggers);
    viewport()->setAutoFillBackground(false);
}

void ReviewView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    if (roles.isEmpty())
        QTreeView::dataChanged(first, last, roles);
    else
        viewport()->update();
}

void ReviewView::toggleBox(const QModelIndex& index) {
    if (index.flags().testFlag(Qt::ItemIsUserCheckable)) model()->setData(index, {}, Qt::CheckStateRole);
}

void ReviewView::mousePressEvent(QMouseEvent* event) {
    const auto index = indexAt(event->position().toPoint());
    const auto place = ReviewDelegate::placesIn(visualRect(index), index, layoutDirection());
    if (index.isValid() && event->button() == Qt::LeftButton) {
        if (place.box.adjusted(-4, -8, 4, 8).contains(event->position().toPoint())) return toggleBox(index);
        if (place.arrow.contains(event->position().toPoint())) return setExpanded(index, !isExpanded(index));
    }
    QTreeView::mousePressEvent(event);
}

void ReviewView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space) return toggleBox(currentIndex());
    const auto text = event->text();
    const bool isTyped = !text.isEmpty() && text.at(0).isPrint();
    if (isTyped || event->key() == Qt::Key_Return || event->key() == Qt::Key_Escape) return event->ignore();
    QTreeView::keyPressEvent(event);
}

/// The delegate paints the whole row, its ground included.
void ReviewView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    QStyleOptionViewItem row = option;
    row.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    row.state.setFlag(QStyle::State_Open, isExpanded(index));
    row.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
    const auto pointer = viewport()->mapFromGlobal(QCursor::pos());
    row.state.setFlag(QStyle::State_MouseOver, underMouse() && option.rect.contains(pointer));
    row.rect = option.rect;
    itemDelegate()->paint(painter, row, index);
}

} // namespace tidwen
