#include "app/shell/sidebar_item.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

namespace tidwen {

SidebarItem::SidebarItem(QString icon, const QString& title) : icon_(std::move(icon)) {
    setText(title);
    setAccessibleName(title);
    setToolTip(title.toHtmlEscaped());
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SidebarItem::setCount(const QString& count) {
    count_ = count;
    setAccessibleDescription(count);
    updateGeometry();
    update();
}

void SidebarItem::setSecondLine(const QString& line) {
    second_ = line;
    setAccessibleDescription(line);
    updateGeometry();
    update();
}

void SidebarItem::warn(const QString& words) {
    warning_ = words;
    setToolTip((words.isEmpty() ? text() : words).toHtmlEscaped());
    setAccessibleDescription(words.isEmpty() ? second_ : second_ + QStringLiteral(", ") + words);
    update();
}

void SidebarItem::setNarrow(bool isNarrow) {
    isNarrow_ = isNarrow;
    updateGeometry();
    update();
}

QSize SidebarItem::sizeHint() const {
    const int lines = QFontMetrics(textFont(Type::body)).height()
                      + (second_.isEmpty() ? 0 : QFontMetrics(textFont(Type::second)).height());
    const int height = lines + scaled(second_.isEmpty() ? 16 : 18);
    if (isNarrow_) return {scaled(40), height};
    const int ends = scaled(38) + scaled(10);
    const int words =
        QFontMetrics(textFont(second_.isEmpty() ? Type::strong : Type::body)).horizontalAdvance(text());
    const QFontMetrics small(textFont(Type::second));
    const int beside = second_.isEmpty() ? small.horizontalAdvance(count_) + 4 : scaled(16);
    return {ends + std::max(words + beside, small.horizontalAdvance(second_) + beside), height};
}

void SidebarItem::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    isReturn ? click() : QAbstractButton::keyPressEvent(event);
}

void SidebarItem::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ground = QRectF(rect()).adjusted(.5, .5, -.5, -.5);
    if (!second_.isEmpty()) {
        painter.setPen(colors()[Role::line]);
        painter.setBrush(colors()[underMouse() ? Role::hover : Role::surface]);
        painter.drawRoundedRect(ground, 7, 7);
    } else if (isChecked() || underMouse()) {
        fillRounded(painter, ground, colors()[isChecked() ? Role::chosen : Role::hover], 7);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors()[Role::accent], 2));
        painter.drawRoundedRect(ground.adjusted(1, 1, -1, -1), 7, 7);
    }
    const auto color = colors()[isChecked() ? Role::accent : Role::text];
    const int icon = scaled(18);
    const auto at = [&](int x, int y, int w, int h) {
        return QStyle::visualRect(layoutDirection(), rect(), QRect(x, y, w, h));
    };
    const int iconX = isNarrow_ ? (width() - icon) / 2 : scaled(10);
    paintIcon(painter, at(iconX, (height() - icon) / 2, icon, icon), icon_, color);
    if (const int dot = scaled(8); !warning_.isEmpty())
        fillRounded(painter, at(iconX + icon - dot / 2, (height() - icon) / 2 - dot / 2, dot, dot),
                    colors()[Role::look], dot / 2.0);
    if (isNarrow_) return;
    const auto draw = [&](const QRect& place, Type type, const QColor& pen, const QString& words,
                          Qt::Alignment side) {
        painter.setFont(textFont(type));
        painter.setPen(pen);
        painter.drawText(place,
                         static_cast<int>(QStyle::visualAlignment(layoutDirection(), side | Qt::AlignVCenter))
                             | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(words, Qt::ElideRight, place.width()));
    };
    const int x = scaled(38), end = width() - scaled(10);
    const int figures = QFontMetrics(textFont(Type::second)).horizontalAdvance(count_) + 2;
    if (second_.isEmpty()) {
        draw(at(x, 0, end - x - figures, height()), isChecked() ? Type::strong : Type::body, color, text(),
             Qt::AlignLeft);
        draw(at(end - figures, 0, figures, height()), Type::second, colors()[Role::second], count_,
             Qt::AlignRight);
        return;
    }
    const int line = QFontMetrics(textFont(Type::body)).height();
    const int chevron = scaled(16);
    draw(at(x, scaled(9), end - x - chevron, line), Type::body, color, text(), Qt::AlignLeft);
    draw(at(x, scaled(9) + line, end - x - chevron, height() - scaled(18) - line), Type::second,
         colors()[Role::second], second_, Qt::AlignLeft);
    paintIcon(painter, at(end - chevron, (height() - chevron) / 2, chevron, chevron),
              QStringLiteral("chevron-down"), colors()[Role::second]);
}

} // namespace tidwen
