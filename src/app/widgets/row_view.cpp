#include "app/widgets/row_view.h"

#include "app/style/metrics.h"
#include "app/widgets/motion.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace tidwen {

namespace {

constexpr int leastHeight = 132; ///< three rows; in less room the screen around it scrolls

} // namespace

RowView::RowView(RowDelegate* delegate, QWidget* parent) : QTreeView(parent), delegate_(delegate) {
    delegate->setParent(this);
    setItemDelegate(delegate);
    setHeaderHidden(true);
    setIndentation(0);
    setRootIsDecorated(false);
    setItemsExpandable(true);
    setExpandsOnDoubleClick(false);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAnimated(motionTime() > 0);
    setMouseTracking(true);
    setEditTriggers(NoEditTriggers);
    viewport()->setAutoFillBackground(false);
    setMinimumHeight(scaled(leastHeight));
}

void RowView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    if (roles.isEmpty())
        QTreeView::dataChanged(first, last, roles);
    else
        viewport()->update();
}

void RowView::openAll() {
    const auto open = [this](const auto& self, const QModelIndex& above) -> void {
        for (int row = 0; row < model()->rowCount(above); ++row) {
            const auto index = model()->index(row, 0, above);
            if (index.flags().testFlag(Qt::ItemNeverHasChildren)) return;
            expand(index);
            self(self, index);
        }
    };
    open(open, {});
}

void RowView::toggleBox(const QModelIndex& index) {
    if (index.flags().testFlag(Qt::ItemIsUserCheckable)) model()->setData(index, {}, Qt::CheckStateRole);
}

bool RowView::click(const QModelIndex& index, const QPoint& point) {
    const auto places = delegate_->placesIn(visualRect(index), index, layoutDirection());
    if (places.box.adjusted(-4, -8, 4, 8).contains(point)) {
        toggleBox(index);
        return true;
    }
    if (places.arrow.contains(point)) {
        setExpanded(index, !isExpanded(index));
        return true;
    }
    if (!places.control.contains(point) || !onControl) return false;
    setCurrentIndex(index);
    onControl(index);
    return true;
}

void RowView::mousePressEvent(QMouseEvent* event) {
    const auto point = event->position().toPoint();
    const auto index = indexAt(point);
    if (index.isValid() && event->button() == Qt::LeftButton && click(index, point)) return;
    QTreeView::mousePressEvent(event);
}

/// Passes over what has nothing to choose and to show, the headings of groups.
QModelIndex RowView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    auto to = QTreeView::moveCursor(action, modifiers);
    const bool isBack = action == MoveUp || action == MoveLeft || action == MovePageUp;
    while (to.isValid() && !to.flags().testFlag(Qt::ItemIsSelectable))
        to = isBack ? indexAbove(to) : indexBelow(to);
    return to.isValid() ? to : currentIndex();
}

void RowView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space) return toggleBox(currentIndex());
    const auto text = event->text();
    const bool isTyped = !text.isEmpty() && text.at(0).isPrint();
    if (isTyped || event->key() == Qt::Key_Return || event->key() == Qt::Key_Escape) return event->ignore();
    QTreeView::keyPressEvent(event);
}

void RowView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    if (delegate_->growsWhenNarrow() && event->size().width() != event->oldSize().width())
        scheduleDelayedItemsLayout();
}

/// What delegates of rows use, and no more: a view of 100,000 rows asks each for its height with one of
/// these, and what is left out takes longer to find out than the heights.
void RowView::initViewItemOption(QStyleOptionViewItem* option) const {
    option->widget = this;
    option->direction = layoutDirection();
    option->palette = palette();
    option->state = isEnabled() ? QStyle::State_Enabled : QStyle::State_None;
}

/// The delegate paints the whole row, its ground included.
void RowView::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem row = option;
    row.widget = this;
    row.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    row.state.setFlag(QStyle::State_Open, isExpanded(index));
    row.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
    const auto pointer = viewport()->mapFromGlobal(QCursor::pos());
    row.state.setFlag(QStyle::State_MouseOver, underMouse() && option.rect.contains(pointer));
    itemDelegate()->paint(painter, row, index);
}

} // namespace tidwen
