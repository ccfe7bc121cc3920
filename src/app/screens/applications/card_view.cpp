#include "app/screens/applications/card_view.h"

#include "app/models/app_icons.h"
#include "app/screens/applications/card_delegate.h"
#include "app/style/metrics.h"
#include "base/path.h"

#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <iterator>
#include <utility>

namespace tidwen {

namespace {

constexpr int gap = 10;

int stepX() {
    return cardSize().width() + scaled(gap);
}
int stepY() {
    return cardSize().height() + scaled(gap);
}

} // namespace

CardView::CardView(AppIcons& icons)
    : following_(icons.arrived.connect([this](const Path&) { viewport()->update(); })) {
    setItemDelegate(new CardDelegate(icons, this));
    setSelectionMode(ExtendedSelection);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setMouseTracking(true);
    setEditTriggers(NoEditTriggers);
    viewport()->setAutoFillBackground(false);
}

void CardView::setModel(QAbstractItemModel* model) {
    QListView::setModel(model);
    connect(model, &QAbstractItemModel::rowsRemoved, this, [this] { needPlacing(); });
    needPlacing();
}

const CardView::Group* CardView::groupOfRow(int row) const {
    const auto after =
        std::upper_bound(groups().begin(), groups().end(), row,
                         [](int wanted, const Group& group) { return wanted < group.first - 1; });
    return after == groups().begin() ? nullptr : &*std::prev(after);
}

QRect CardView::visualRect(const QModelIndex& index) const {
    const auto* group = index.isValid() ? groupOfRow(index.row()) : nullptr;
    if (!group) return {};
    if (index.row() < group->first)
        return {0, group->top - verticalOffset(), viewport()->width(), headingHeight()};
    return cell(*group, index.row() - group->first);
}

QRect CardView::cell(const Group& group, int number) const {
    const int x = number % columns_ * stepX();
    const int y = group.top + headingHeight() + number / columns_ * stepY() - verticalOffset();
    const auto size = cardSize();
    return {QPoint(isRightToLeft() ? viewport()->width() - x - size.width() : x, y), size};
}

std::pair<int, int> CardView::cardsBetween(const Group& group, int top, int bottom) const {
    const int heading = headingHeight(), line = stepY();
    const int origin = group.top + heading - verticalOffset();
    if (bottom - origin < -heading || top - origin > group.lines * line) return {0, -1};
    const int first = qMax(0, top - origin) / line * columns_;
    const int end = (qMax(0, bottom - origin) / line + 1) * columns_;
    return {qMin(first, group.count), qMin(end, group.count)};
}

QModelIndex CardView::indexAt(const QPoint& point) const {
    const auto& placed = groups();
    const int y = point.y() + verticalOffset();
    const auto after = std::upper_bound(placed.begin(), placed.end(), y,
                                        [](int wanted, const Group& group) { return wanted < group.top; });
    if (after == placed.begin()) return {};
    const auto& group = *std::prev(after);
    const int below = y - group.top - headingHeight();
    const int x = isRightToLeft() ? viewport()->width() - point.x() : point.x();
    if (below < 0 || x < 0 || x / stepX() >= columns_) return {};
    const int number = below / stepY() * columns_ + x / stepX();
    const bool isBetween = x % stepX() >= cardSize().width() || below % stepY() >= cardSize().height();
    return isBetween || number >= group.count ? QModelIndex() : model()->index(group.first + number, 0);
}

void CardView::scrollTo(const QModelIndex& index, ScrollHint /*hint*/) {
    const auto rect = visualRect(index);
    auto* bar = verticalScrollBar();
    if (rect.top() < 0)
        bar->setValue(bar->value() + rect.top() - 8);
    else if (rect.bottom() >= viewport()->height())
        bar->setValue(bar->value() + rect.bottom() - viewport()->height() + 9);
}

QModelIndex CardView::moveCursor(CursorAction action, Qt::KeyboardModifiers /*modifiers*/) {
    if (groups().empty()) return {};
    const auto last = groups().size() - 1;
    const auto go = [&](std::size_t group, int number) {
        const auto& to = groups()[group];
        return model()->index(to.first + qBound(0, number, to.count - 1), 0);
    };
    if (!currentIndex().isValid() || action == MoveHome) return go(0, 0);
    const auto* here = groupOfRow(currentIndex().row());
    if (!here) return go(0, 0);
    const auto group = static_cast<std::size_t>(here - groups().data());
    const int number = currentIndex().row() - here->first;
    const int page = qMax(1, viewport()->height() / stepY()) * columns_;
    switch (action) {
    case MoveEnd:
        return go(last, groups()[last].count);
    case MoveUp:
        if (number >= columns_ || group == 0)
            return go(group, number >= columns_ ? number - columns_ : number);
        return go(group - 1, (groups()[group - 1].lines - 1) * columns_ + number % columns_);
    case MoveDown:
        if (number / columns_ < here->lines - 1) return go(group, number + columns_);
        return group < last ? go(group + 1, number % columns_) : go(group, number);
    case MovePageUp:
        return go(group, number >= page ? number - page : number % columns_);
    case MovePageDown:
        return go(group, number + page);
    default:
        break;
    }
    const bool isForward =
        action == MoveNext || (action != MovePrevious && (action == MoveRight) != isRightToLeft());
    if (isForward)
        return number + 1 < here->count || group == last ? go(group, number + 1) : go(group + 1, 0);
    return number > 0 || group == 0 ? go(group, number - 1) : go(group - 1, groups()[group - 1].count);
}

/// Who comes by keyboard sees where. What hands the focus over makes nothing current that nobody chose.
void CardView::focusInEvent(QFocusEvent* event) {
    const bool isByKey = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    const bool isOnCard = model()->flags(currentIndex()).testFlag(Qt::ItemIsSelectable); // not on a heading
    if (isByKey && !isOnCard)
        selectionModel()->setCurrentIndex(moveCursor(MoveHome, Qt::NoModifier),
                                          QItemSelectionModel::NoUpdate);
    QListView::focusInEvent(event);
}

/// What is typed goes to the screen, which searches for it, or shows the details for a space.
void CardView::keyPressEvent(QKeyEvent* event) {
    const auto text = event->text();
    const bool isTyped = !text.isEmpty() && text.at(0).isPrint();
    if (isTyped && !(event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))) return event->ignore();
    QListView::keyPressEvent(event);
}

void CardView::setSelection(const QRect& area, QItemSelectionModel::SelectionFlags flags) {
    QItemSelection chosen;
    const auto wanted = area.normalized();
    for (const auto& group : groups()) {
        const auto [first, end] = cardsBetween(group, wanted.top(), wanted.bottom());
        for (int i = first; i < end; ++i)
            if (cell(group, i).intersects(wanted)) {
                const auto index = model()->index(group.first + i, 0);
                chosen.select(index, index);
            }
    }
    selectionModel()->select(chosen, flags);
}

void CardView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const auto base = option.state & ~QStyle::State_HasFocus;
    const auto under = indexAt(viewport()->mapFromGlobal(QCursor::pos()));
    const auto draw = [&](int row) {
        const auto index = model()->index(row, 0);
        option.rect = visualRect(index);
        if (!option.rect.intersects(event->rect())) return;
        option.state = base;
        option.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
        option.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
        option.state.setFlag(QStyle::State_MouseOver, index == under);
        itemDelegate()->paint(&painter, option, index);
    };
    for (const auto& group : groups()) {
        const auto [first, end] = cardsBetween(group, event->rect().top(), event->rect().bottom());
        if (first <= end) draw(group.first - 1);
        for (int i = first; i < end; ++i)
            draw(group.first + i);
    }
}

void CardView::needPlacing() {
    isPlaced_ = false;
    scheduleDelayedItemsLayout();
    viewport()->update();
}

const std::vector<CardView::Group>& CardView::groups() const {
    if (!isPlaced_) place();
    return groups_;
}

void CardView::doItemsLayout() {
    place();
}

void CardView::place() const {
    isPlaced_ = true;
    groups_.clear();
    columns_ = qMax(1, (viewport()->width() + scaled(gap)) / stepX());
    int y = 0;
    const int rows = model() ? model()->rowCount() : 0;
    for (int row = 0; row < rows;) {
        int end = row + 1;
        while (end < rows && model()->flags(model()->index(end, 0)).testFlag(Qt::ItemIsSelectable))
            ++end;
        const int count = end - row - 1;
        const int lines = (count + columns_ - 1) / columns_;
        groups_.push_back({row + 1, count, lines, y});
        y += headingHeight() + lines * stepY();
        row = end;
    }
    verticalScrollBar()->setRange(0, qMax(0, y - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(scaled(40));
}

// NOLINTBEGIN(bugprone-parent-virtual-call): cards are placed here, not by the layout of the list.
void CardView::reset() {
    QAbstractItemView::reset();
    needPlacing();
}

void CardView::resizeEvent(QResizeEvent* event) {
    QAbstractItemView::resizeEvent(event);
    needPlacing();
}

void CardView::rowsInserted(const QModelIndex& above, int first, int last) {
    QAbstractItemView::rowsInserted(above, first, last);
    needPlacing();
}

void CardView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    QAbstractItemView::dataChanged(first, last, roles);
    viewport()->update();
}
// NOLINTEND(bugprone-parent-virtual-call)

int CardView::verticalOffset() const {
    return verticalScrollBar()->value();
}

} // namespace tidwen
