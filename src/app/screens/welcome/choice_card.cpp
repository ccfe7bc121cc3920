#include "app/screens/welcome/choice_card.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QKeyEvent>
#include <QPainter>

namespace tidwen {

ChoiceCard::ChoiceCard(QString icon, const QString& title, const QString& sentence)
    : icon_(std::move(icon)), sentence_(sentence) {
    setText(title);
    setAccessibleName(title);
    setAccessibleDescription(sentence);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setFixedWidth(scaled(230));
    setMinimumHeight(sizeHint().height());
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred); // as high as its neighbour
}

QSize ChoiceCard::sizeHint() const {
    return {scaled(230),
            titleTop() + heightOf(Type::strong, text()) + heightOf(Type::second, sentence_) + edge()};
}

int ChoiceCard::edge() {
    return scaled(20);
}

int ChoiceCard::titleTop() {
    return edge() + scaled(18) + scaled(12);
}

/// Of words in as many lines as they need.
int ChoiceCard::heightOf(Type type, const QString& words) {
    const QRect room(0, 0, scaled(230) - 2 * edge(), QWIDGETSIZE_MAX);
    return QFontMetrics(textFont(type)).boundingRect(room, Qt::TextWordWrap, words).height();
}

void ChoiceCard::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
    QAbstractButton::keyPressEvent(event);
}

void ChoiceCard::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(colors()[underMouse() && isEnabled() ? Role::hover : Role::surface]);
    painter.setPen(hasFocus() ? QPen(colors()[Role::accent], 2) : QPen(colors()[Role::line], 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 11, 11);
    const QRect icon(edge(), edge(), scaled(18), scaled(18));
    paintIcon(painter, QStyle::visualRect(layoutDirection(), rect(), icon), icon_, colors()[Role::accent]);
    QRect place(edge(), titleTop(), width() - 2 * edge(), 0);
    const auto align = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignTop);
    const auto draw = [&](Type type, Role role, const QString& words) {
        place.setHeight(heightOf(type, words));
        painter.setFont(textFont(type));
        painter.setPen(colors()[role]);
        painter.drawText(place, static_cast<int>(align) | Qt::TextWordWrap, words);
        place.translate(0, place.height());
    };
    draw(Type::strong, Role::text, text());
    draw(Type::second, Role::second, sentence_);
}

} // namespace tidwen
