#include "app/style/switch_shape.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
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
    const QRectF track(place);
    fillRounded(painter, track, colors()[look.isOn ? Role::accent : Role::second], track.height() / 2);
    const double knob = track.height() - 4;
    const bool isAtRight = look.isOn == (direction == Qt::LeftToRight);
    const double x = isAtRight ? track.right() - knob - 2 : track.left() + 2;
    fillRounded(painter, QRectF(x, track.top() + 2, knob, knob),
                colors()[look.isOn ? Role::onAccent : Role::surface], knob / 2);
    painter.restore();
}

} // namespace tidwen
