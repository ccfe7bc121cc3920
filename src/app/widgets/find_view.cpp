#include "app/widgets/find_view.h"

#include "app/models/find_row.h"
#include "app/style/metrics.h"
#include "app/widgets/find_delegate.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace tidwen {

FindView::FindView(QWidget* parent) : QTreeView(parent) {
    setItemDelegate(new FindDelegate(this));
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

void FindView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    if (roles.isEmpty())
        QTreeView::dataChanged(first, last, roles);
    else
        viewport()->update();
}

void FindView::toggleBox(const QModelIndex& index) {
    if (index.flags().testFlag(Qt::ItemIsUserCheckable)) model()->setData(index, {}, Qt::CheckStateRole);
}

void FindView::mousePressEvent(QMouseEvent* event) {
    const auto index = indexAt(event->position().toPoint());
    const auto place = FindDelegate::placesIn(visualRect(index), index, layoutDirection());
    if (index.isValid() && event->button() == Qt::LeftButton) {
        if (place.box.adjusted(-4, -8, 4, 8).contains(event->position().toPoint())) return toggleBox(index);
        if (place.arrow.contains(event->position().toPoint())) return setExpanded(index, !isExpanded(index));
    }
    QTreeView::mousePressEvent(event);
}

void FindView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space) return toggleBox(currentIndex());
    const auto text = event->text();
    const bool isTyped = !text.isEmpty() && text.at(0).isPrint();
    if (isTyped || event->key() == Qt::Key_Return || event->key() == Qt::Key_Escape) return event->ignore();
    QTreeView::keyPressEvent(event);
}

/// The delegate paints the whole row, its ground included.
void FindView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
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
