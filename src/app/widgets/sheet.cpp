#include "app/widgets/sheet.h"

#include "app/style/metrics.h"
#include "app/style/style.h"
#include "app/widgets/motion.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/return_key.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/wrapping_row.h"

#include <QApplication>
#include <QBoxLayout>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

/// Over a sheet that has just appeared: the second click of a double click was meant for what is below.
class Shield final : public QWidget {
  public:
    explicit Shield(QWidget& sheet) : QWidget(&sheet) {
        setGeometry(sheet.rect());
        show();
        raise();
        QTimer::singleShot(QApplication::doubleClickInterval(), this, &QObject::deleteLater);
    }

  protected:
    void mousePressEvent(QMouseEvent* /*event*/) override {}
    void mouseReleaseEvent(QMouseEvent* /*event*/) override {}
};

} // namespace

Sheet::Sheet(QWidget* window, const QString& name, int width)
    : QWidget(window), content_(nullptr), before_(QApplication::focusWidget()) {
    setObjectName(QStringLiteral("sheet"));
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    auto* panel = new Panel({.radius = 14});
    panel_ = panel;
    panel->setFixedWidth(qMin(scaled(width), window->width() - scaled(48)));
    content_ = parts::column(panel, scaled(14));
    content_->setContentsMargins(scaled(24), scaled(24), scaled(24), scaled(24));
    auto* middle = new QWidget;
    auto* inner = parts::column(middle);
    inner->addStretch(1);
    inner->addLayout(parts::centred(panel));
    inner->addStretch(2);
    parts::column(this)->addWidget(new Scrolled(middle));
    window->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { keepFocus(now); });
}

void Sheet::addWords(const QStringList& paragraphs) {
    content_->addWidget(parts::paragraph(accessibleName(), Type::sheet));
    for (const auto& words : paragraphs)
        content_->addWidget(parts::paragraph(words));
}

QBoxLayout& Sheet::addAnswers() {
    auto* answers = new WrappingRow;
    answers->setSpacing(scaled(6));
    answers->addStretch(1);
    content_->addLayout(answers);
    return *answers;
}

void Sheet::open() {
    setGeometry(parentWidget()->rect());
    show();
    raise();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest); // it settles where it belongs
    settle(*panel_);
    returnKey::waitForPause();
    setFocus();
    for (auto* button : findChildren<QPushButton*>())
        if (isPrimary(button)) button->setFocus();
}

const QWidget* Sheet::topmost(const QWidget& window) {
    const auto sheets = window.findChildren<QWidget*>(QStringLiteral("sheet"), Qt::FindDirectChildrenOnly);
    const auto shown =
        std::find_if(sheets.rbegin(), sheets.rend(), [](auto* sheet) { return sheet->isVisible(); });
    return shown != sheets.rend() ? *shown : nullptr;
}

/// A screen below takes the focus when it changes by itself: keys meant for the sheet would answer the
/// screen.
void Sheet::keepFocus(QWidget* focused) {
    const bool isElsewhere = !focused || focused->window() != window() || qobject_cast<QMenuBar*>(focused);
    if (isElsewhere || focused == this || isAncestorOf(focused) || topmost(*parentWidget()) != this) return;
    before_ = focused;
    (focusWidget() ? focusWidget() : this)->setFocus();
}

void Sheet::close() {
    hide();
    if (before_ && before_->isVisible()) before_->setFocus();
    deleteLater();
}

void Sheet::cancel() {
    const auto told = onCancel;
    close();
    if (told) told();
}

bool Sheet::focusNextPrevChild(bool next) {
    auto* start = focusWidget() ? focusWidget() : this;
    for (auto* widget = start;;) {
        widget = next ? widget->nextInFocusChain() : widget->previousInFocusChain();
        if (widget == start) return true;
        if (!isAncestorOf(widget) || !widget->isVisible() || !widget->isEnabled()) continue;
        if (!(widget->focusPolicy() & Qt::TabFocus)) continue;
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !stays) return cancel();
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return;
    auto* focused = qobject_cast<QPushButton*>(QApplication::focusWidget());
    if (focused && isAncestorOf(focused)) return focused->click();
    for (auto* button : findChildren<QPushButton*>())
        if (isPrimary(button) && button->isEnabled()) return button->click();
}

void Sheet::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    returnKey::waitNoLonger();
}

void Sheet::paintEvent(QPaintEvent* /*event*/) {
    if (!std::exchange(wasSeen_, true)) {
        returnKey::waitForPause(); // the pause is one to read in
        QMetaObject::invokeMethod(
            this, [this] { new Shield(*this); }, Qt::QueuedConnection); // which deletes itself
    }
    QPainter(this).fillRect(rect(), QColor(0, 0, 0, 90));
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

} // namespace tidwen
