#include "app/shell/drop_veil.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

DropVeil::DropVeil(QWidget* window) : QWidget(window) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setObjectName(QStringLiteral("drop veil"));
    hide();
}

void DropVeil::show(const QString& words) {
    words_ = words;
    setAccessibleName(words);
    setGeometry(parentWidget()->rect());
    setVisible(true);
    raise();
    update();
}

void DropVeil::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto veil = colors()[Role::window];
    veil.setAlphaF(0.92F);
    painter.fillRect(rect(), veil);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors()[Role::accent], 2, Qt::DashLine));
    const int inset = scaled(14);
    painter.drawRoundedRect(rect().adjusted(inset, inset, -inset, -inset), 11, 11);
    const int icon = scaled(28);
    const QRectF place(width() / 2.0 - icon / 2.0, height() / 2.0 - icon - scaled(8), icon, icon);
    paintIcon(painter, place, QStringLiteral("drop"), colors()[Role::accent]);
    painter.setFont(textFont(Type::sheet));
    painter.setPen(colors()[Role::accent]);
    painter.drawText(QRect(inset * 2, height() / 2, width() - inset * 4, scaled(60)),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, words_);
}

} // namespace tidwen
