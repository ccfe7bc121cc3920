#include "app/widgets/progress_ring.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

namespace {

constexpr int fullTurn = 360 * 16; ///< the painter counts sixteenths of a degree
constexpr int top = 90 * 16;

} // namespace

ProgressRing::ProgressRing() {
    setFixedSize(scaled(76), scaled(76));
}

void ProgressRing::show(double part) {
    part_ = qBound(0.0, part, 1.0);
    update();
}

void ProgressRing::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double thick = scaled(7);
    const auto ring = QRectF(rect()).adjusted(thick / 2, thick / 2, -thick / 2, -thick / 2);
    painter.setPen(QPen(colors()[Role::track], thick));
    painter.drawEllipse(ring);
    painter.setPen(QPen(colors()[Role::accent], thick, Qt::SolidLine, Qt::FlatCap));
    painter.drawArc(ring, top, -qRound(fullTurn * qMax(0.02, part_)));
}

} // namespace tidwen
