#include "app/widgets/row_delegate.h"

#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

int lineHeight(Type type) {
    return QFontMetrics(textFont(type)).height();
}

QRect RowPainter::at(int x, int y, int w, int h) const {
    return QStyle::visualRect(option_.direction, option_.rect,
                              QRect(option_.rect.left() + x, option_.rect.top() + y, w, h));
}

void RowPainter::text(const QRect& place, Type type, Role color, const QString& words, Qt::Alignment side) {
    painter_.setFont(textFont(type));
    painter_.setPen(colors()[color]);
    const auto align = QStyle::visualAlignment(option_.direction, side | Qt::AlignVCenter);
    painter_.drawText(place, static_cast<int>(align) | Qt::TextSingleLine,
                      painter_.fontMetrics().elidedText(words, Qt::ElideMiddle, place.width()));
}

void RowPainter::twoLines(int x, int end, const QString& title, const QString& second) {
    const int first = lineHeight(Type::body), other = second.isEmpty() ? 0 : lineHeight(Type::second);
    const int top = (height() - first - other) / 2;
    text(at(x, top, end - x, first), Type::body, Role::text, title);
    if (other > 0) text(at(x, top + first, end - x, other), Type::second, Role::second, second);
}

void RowPainter::ground(const QRectF& place) {
    constexpr double radius = 7;
    if (option_.state.testFlag(QStyle::State_Selected))
        fillRounded(painter_, place, colors()[Role::chosen], radius);
    else if (option_.state.testFlag(QStyle::State_MouseOver))
        fillRounded(painter_, place, colors()[Role::hover], radius);
    if (!option_.state.testFlag(QStyle::State_HasFocus)) return;
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(colors()[Role::accent], 1.5));
    painter_.drawRoundedRect(place.adjusted(1, 1, -1, -1), radius, radius);
}

void RowPainter::box(const QRect& place) {
    const auto state = index_.data(Qt::CheckStateRole);
    if (!state.isValid()) return;
    QStyleOption box;
    box.rect = place;
    box.state = QStyle::State_Enabled;
    box.state.setFlag(QStyle::State_On, state.toInt() == Qt::Checked);
    box.state.setFlag(QStyle::State_NoChange, state.toInt() == Qt::PartiallyChecked);
    option_.widget->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter_);
}

int RowPainter::badge(int end, int most, const QString& words, Role color, Role ground) {
    const QFontMetrics metrics(textFont(Type::section));
    const int wide = qMin(metrics.horizontalAdvance(words) + 2, most) + scaled(12);
    const int high = metrics.height() + scaled(6);
    const auto place = at(end - wide, (height() - high) / 2, wide, high);
    fillRounded(painter_, place, colors()[ground], 5);
    text(place.adjusted(scaled(6), 0, -scaled(6), 0), Type::section, color, words);
    return end - wide;
}

} // namespace tidwen
