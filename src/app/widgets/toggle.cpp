#include "app/widgets/toggle.h"

#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/style/switch_shape.h"

#include <QPainter>

namespace tidwen {

namespace {

constexpr int ring = 3; ///< room around the track for the ring of the focus

} // namespace

Toggle::Toggle(const QString& name) {
    setCheckable(true);
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Toggle::sizeHint() const {
    return switchSize() + QSize(2 * ring, 2 * ring);
}

void Toggle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto track = rect().adjusted(ring, ring, -ring, -ring);
    paintSwitch(painter, track, {isChecked(), isEnabled()}, layoutDirection());
    if (!hasFocus()) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors()[Role::accent], 2));
    const qreal radius = track.height() / 2. + 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius, radius);
}

} // namespace tidwen
