#include "app/shell/launch.h"

#include <QPointer>
#include <QTimer>
#include <utility>

namespace tidwen {

Launch::Launch(Window window, const Reason& reason, Log& log, LaunchWaits waits)
    : window_(std::move(window)), log_(log), waits_(waits) {
    QTimer::singleShot(waits_.untold, this, [this] { take(false); });
    reason([self = QPointer(this)](bool isLogin) {
        if (self) self->take(isLogin);
    });
}

void Launch::take(bool isLogin) {
    if (std::exchange(isTold_, true)) return;
    if (!isLogin) return window_.show();
    log_.info("Login launch: watching the Trash without a window");
    isSettling_ = true;
    QTimer::singleShot(waits_.login, this, [this] { endUnlessNeeded(); });
}

/// A process that nobody sees and that waits for nothing would stay until the account logs out.
void Launch::endUnlessNeeded() {
    isSettling_ = false;
    if (window_.isOpening()) return QTimer::singleShot(waits_.login, this, [this] { endUnlessNeeded(); });
    if (!window_.isNeeded()) window_.end();
}

void Launch::cameToFront() {
    if (isTold_ && !isSettling_) window_.comeBack();
}

} // namespace tidwen
