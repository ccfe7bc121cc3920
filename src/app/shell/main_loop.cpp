#include "app/shell/main_loop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <utility>

namespace tidwen {

namespace {

constexpr qint64 longestTurn = 8; ///< milliseconds: half a frame

} // namespace

void MainLoop::post(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    work_.push_back(std::move(work));
    if (!std::exchange(isAwake_, true)) QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool MainLoop::event(QEvent* event) {
    if (event->type() != QEvent::User) return QObject::event(event);
    QElapsedTimer turn;
    turn.start();
    while (runOne()) {
        if (turn.elapsed() < longestTurn) continue;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::LowEventPriority);
        break;
    }
    return true;
}

/// False when nothing is left to do; then the next post wakes this again.
bool MainLoop::runOne() {
    std::function<void()> next;
    {
        const std::lock_guard lock(mutex_);
        if (work_.empty()) {
            isAwake_ = false;
            return false;
        }
        next = std::move(work_.front());
        work_.pop_front();
    }
    next();
    return true;
}

} // namespace tidwen
