#include "app/widgets/panel.h"

#include "app/style/metrics.h"
#include "app/style/style.h"
#include "app/widgets/wrapping_row.h"
#include "base/language.h"

#include <QBoxLayout>
#include <QPainter>

namespace tidwen {

Panel::Panel(Look look, QWidget* parent) : QWidget(parent), look_(look) {}

void Panel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, look_.radius > 0);
    painter.setBrush(colors()[look_.ground]);
    painter.setPen(Qt::NoPen);
    if (look_.radius > 0) {
        if (look_.line) painter.setPen(colors()[*look_.line]);
        painter.drawRoundedRect(QRectF(rect()).adjusted(.5, .5, -.5, -.5), look_.radius, look_.radius);
        return;
    }
    painter.drawRect(rect());
    if (!look_.line) return;
    painter.setPen(colors()[*look_.line]);
    if (look_.edges.testFlag(Qt::TopEdge)) painter.drawLine(rect().topLeft(), rect().topRight());
    const bool isMirrored = isRightToLeft();
    if (look_.edges.testFlag(isMirrored ? Qt::LeftEdge : Qt::RightEdge))
        painter.drawLine(rect().topRight(), rect().bottomRight());
    if (look_.edges.testFlag(isMirrored ? Qt::RightEdge : Qt::LeftEdge))
        painter.drawLine(rect().topLeft(), rect().bottomLeft());
}

Panel* footerPanel() {
    auto* panel = new Panel({.radius = 0, .edges = Qt::TopEdge});
    auto* layout = new WrappingRow(panel);
    layout->setSpacing(scaled(8));
    layout->setContentsMargins(scaled(24), scaled(12), scaled(24), scaled(12));
    return panel;
}

} // namespace tidwen
