#include "app/widgets/wrapping_row.h"

#include "app/style/metrics.h"

#include <QStyle>
#include <QWidget>
#include <vector>

namespace tidwen {

namespace {

constexpr int longestWords = 200; ///< that are a reason to begin another line

} // namespace

WrappingRow::WrappingRow(QWidget* parent) : QBoxLayout(LeftToRight, parent) {}

bool WrappingRow::isWords(int index) const {
    return stretch(index) > 0 && !itemAt(index)->spacerItem();
}

bool WrappingRow::isPushed() const {
    for (int i = 0; i < count(); ++i)
        if (stretch(i) > 0) return true;
    return false;
}

QSize WrappingRow::minimumSize() const {
    QSize least;
    for (int i = 0; i < count(); ++i)
        if (!itemAt(i)->isEmpty()) least = least.expandedTo(itemAt(i)->minimumSize());
    return least.grownBy(contentsMargins());
}

bool WrappingRow::fits(int width) const {
    int needed = contentsMargins().left() + contentsMargins().right() - spacing();
    for (int i = 0; i < count(); ++i) {
        if (itemAt(i)->isEmpty()) continue;
        const int wished = itemAt(i)->sizeHint().width();
        needed += spacing() + (isWords(i) ? qMin(wished, scaled(longestWords)) : wished);
    }
    return needed <= width;
}

int WrappingRow::heightForWidth(int width) const {
    if (fits(width))
        return QBoxLayout::hasHeightForWidth() ? QBoxLayout::heightForWidth(width) : sizeHint().height();
    return arrange(QRect(0, 0, width, 0), true);
}

void WrappingRow::setGeometry(const QRect& place) {
    QBoxLayout::setGeometry(place);
    if (!fits(place.width())) arrange(place, false);
}

int WrappingRow::arrange(const QRect& place, bool isMeasured) const {
    const auto inner = place.marginsRemoved(contentsMargins());
    const auto direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    int y = inner.top(), high = 0, x = 0;
    std::vector<std::pair<QLayoutItem*, QRect>> line;
    const auto end = [&] {
        if (line.empty()) return;
        const int shift = isPushed() ? inner.width() - (x - spacing()) : 0;
        for (auto& [item, where] : line) {
            where.translate(shift, (high - where.height()) / 2);
            if (!isMeasured) item->setGeometry(QStyle::visualRect(direction, inner, where));
        }
        line.clear();
        y += high + spacing();
        x = high = 0;
    };
    const auto add = [&](QLayoutItem* item, int width) {
        const int height =
            item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
        line.emplace_back(item, QRect(inner.left() + x, y, width, height));
        x += width + spacing();
        high = qMax(high, height);
    };
    for (int i = 0; i < count(); ++i)
        if (auto* item = itemAt(i); isWords(i) && !item->isEmpty()) {
            add(item, inner.width());
            end();
        }
    for (int i = 0; i < count(); ++i) {
        auto* item = itemAt(i);
        if (isWords(i) || item->isEmpty()) continue;
        const int width = qMin(item->sizeHint().width(), inner.width());
        if (x + width > inner.width()) end();
        add(item, width);
    }
    end();
    return y - spacing() - place.top() + contentsMargins().bottom();
}

} // namespace tidwen
