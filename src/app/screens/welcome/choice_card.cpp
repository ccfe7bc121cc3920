#include "app/screens/welcome/choice_card.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

ChoiceCard::ChoiceCard(QString icon, const QString& title, const QString& sentence)
    : icon_(std::move(icon)), sentence_(sentence) {
    setText(title);
    setAccessibleName(title);
    setAccessibleDescription(sentence);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
}

QSize ChoiceCard::sizeHint() const {
    return {scaled(230), scaled(72) + QFontMetrics(textFont(Type::strong)).height()
                             + 2 * QFontMetrics(textFont(Type::second)).height()};
}

void ChoiceCard::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(colors()[underMouse() && isEnabled() ? Role::hover : Role::surface]);
    painter.setPen(hasFocus() ? QPen(colors()[Role::accent], 2) : QPen(colors()[Role::line], 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 11, 11);
    const int edge = scaled(20), icon = scaled(18), inner = width() - 2 * edge;
    paintIcon(painter, QStyle::visualRect(layoutDirection(), rect(), QRect(edge, edge, icon, icon)), icon_,
              colors()[Role::accent]);
    const auto draw = [&](int y, int high, Type type, Role role, const QString& words) {
        painter.setFont(textFont(type));
        painter.setPen(colors()[role]);
        painter.drawText(QRect(edge, y, inner, high), Qt::AlignLeading | Qt::AlignTop | Qt::TextWordWrap,
                         words);
    };
    const int title = QFontMetrics(textFont(Type::strong)).height();
    const int y = edge + icon + scaled(12);
    draw(y, title, Type::strong, Role::text, text());
    draw(y + title, height() - y - title, Type::second, Role::second, sentence_);
}

} // namespace tidwen
