#include "app/widgets/read_only_text.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

namespace {

constexpr int ringWidth = 2;

} // namespace

ReadOnlyText::ReadOnlyText(const QStringList& lines, const QString& accessibleName, int height)
    : QPlainTextEdit(lines.join(QLatin1Char('\n'))) {
    setReadOnly(true);
    setTabChangesFocus(true);
    setAccessibleName(accessibleName);
    setFixedHeight(scaled(height));
    setFont(textFont(Type::second));
    setViewportMargins(ringWidth, ringWidth, ringWidth, ringWidth);
}

/// Around what scrolls, which takes along what is painted on it.
bool ReadOnlyText::event(QEvent* event) {
    const bool isTaken = QPlainTextEdit::event(event);
    if (event->type() == QEvent::Paint && hasFocus()) {
        QPainter painter(this);
        painter.setPen(QPen(colors()[Role::accent], ringWidth));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
    return isTaken;
}

void ReadOnlyText::focusInEvent(QFocusEvent* event) {
    QPlainTextEdit::focusInEvent(event);
    update();
}

void ReadOnlyText::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    update();
}

} // namespace tidwen
