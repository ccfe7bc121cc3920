#include "app/widgets/scrolled.h"

#include "app/widgets/parts.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLayout>

namespace tidwen {

Scrolled::Scrolled(QWidget* content) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(content);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored); // what is around it decides
    setWidget(content);
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
}

bool Scrolled::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget() && event->type() == QEvent::LayoutRequest) fit();
    return QScrollArea::eventFilter(watched, event);
}

void Scrolled::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    fit();
}

void Scrolled::fit() {
    auto& layout = *widget()->layout();
    const auto room = viewport()->size();
    const auto least = layout.totalMinimumSize();
    const int width = qMax(room.width(), least.width());
    const int height = layout.hasHeightForWidth() ? layout.totalMinimumHeightForWidth(width) : least.height();
    widget()->resize(width, qMax(room.height(), height));
}

void layOut(QWidget& screen, QWidget* content, QWidget* footer) {
    auto* layout = parts::column(&screen);
    layout->addWidget(new Scrolled(content), 1);
    layout->addWidget(footer);
}

} // namespace tidwen
