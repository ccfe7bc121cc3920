#include "app/widgets/return_key.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

namespace tidwen::returnKey {

namespace {

constexpr int pause = 500; ///< milliseconds

/// Ahead of every widget, for a button presses itself at a Return.
class Guard final : public QObject {
  public:
    using QObject::QObject;

    void waitForPause() { sinceShown_.start(); }
    void waitNoLonger() { sinceShown_.invalidate(); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || !watched->isWidgetType()) return false;
        const auto& press = static_cast<const QKeyEvent&>(*event);
        if (press.key() != Qt::Key_Return && press.key() != Qt::Key_Enter) return false;
        if (press.isAutoRepeat()) return true;
        // One press meets the widgets from the focus upwards.
        const QWidget* first = QApplication::focusWidget();
        if (watched != (first ? first : QApplication::activeWindow()) || !sinceShown_.isValid()) return false;
        if (sinceShown_.hasExpired(pause)) {
            sinceShown_.invalidate();
            return false;
        }
        sinceShown_.start();
        return true;
    }

  private:
    QElapsedTimer sinceShown_;
};

Guard& theGuard() {
    static QPointer<Guard> guard;
    if (!guard) qApp->installEventFilter(guard = new Guard(qApp));
    return *guard;
}

} // namespace

void guard() {
    theGuard();
}

void waitForPause() {
    theGuard().waitForPause();
}

void waitNoLonger() {
    theGuard().waitNoLonger();
}

} // namespace tidwen::returnKey
