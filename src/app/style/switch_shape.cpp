#include "app/style/switch_shape.h"

#include "app/style/metrics.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

QSize switchSize() {
    return {scaled(34), scaled(20)};
}

void paintSwitch(QPainter& painter, const QRect& place, SwitchLook look, Qt::LayoutDirection direction) {
    painter.save();
    if (!look.isEnabled) painter.setOpacity(0.45);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto track = QRectF(place).adjusted(.5, .5, -.5, -.5);
    painter.setPen(look.isOn ? QPen(Qt::NoPen) : QPen(colors()[Role::second], 1));
    painter.setBrush(colors()[look.isOn ? Role::accent : Role::track]);
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    const double inset = scaled(2), size = track.height() - 2 * inset;
    const bool isAtRight = look.isOn == (direction == Qt::LeftToRight);
    const double x = isAtRight ? track.right() - inset - size : track.left() + inset;
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.isOn ? colors()[Role::onAccent] : colors()[Role::second]);
    painter.drawEllipse(QRectF(x, track.top() + inset, size, size));
    painter.restore();
}

} // namespace tidwen
