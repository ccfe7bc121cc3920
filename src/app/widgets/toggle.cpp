#include "app/widgets/toggle.h"

#include "app/style/metrics.h"
#include "app/style/style.h"

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
    return {scaled(34) + 2 * ring, scaled(20) + 2 * ring};
}

void Toggle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) painter.setOpacity(0.45);
    const auto track = QRectF(rect()).adjusted(ring, ring, -ring, -ring);
    const auto radius = track.height() / 2;
    fillRounded(painter, track, colors()[isChecked() ? Role::accent : Role::second], radius);
    const auto knob = track.height() - 4;
    const bool isAtRight = isChecked() != isRightToLeft();
    const QRectF place(isAtRight ? track.right() - knob - 2 : track.left() + 2, track.top() + 2, knob, knob);
    fillRounded(painter, place, colors()[isChecked() ? Role::onAccent : Role::surface], knob / 2);
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors()[Role::accent], 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius + 2, radius + 2);
}

} // namespace tidwen
