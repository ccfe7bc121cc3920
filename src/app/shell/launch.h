#pragma once

#include "base/log.h"

#include <QObject>
#include <chrono>
#include <functional>

namespace tidwen {

struct LaunchWaits {
    std::chrono::milliseconds untold = std::chrono::seconds(2); ///< for the reason; then the window shows
    std::chrono::milliseconds login = std::chrono::seconds(5);  ///< the login itself may activate the program
};

/// When the window shows itself. Started at a login, the program only watches the Trash: the window stays
/// away until somebody comes to it, and the program ends when there is nothing to watch. Main thread only.
class Launch final : public QObject {
  public:
    struct Window {
        std::function<void()> show;
        std::function<void()> comeBack;  ///< shows the window that was closed
        std::function<bool()> isOpening; ///< whether it watches is not known yet
        std::function<bool()> isNeeded;  ///< it is seen, or watches the Trash
        std::function<void()> end;
    };
    /// Passes on, once and on the main thread, whether a login started the program.
    using Reason = std::function<void(std::function<void(bool isLogin)> told)>;

    /// The log outlives it.
    Launch(Window window, const Reason& reason, Log& log, LaunchWaits waits = {});

    /// The program became the active one.
    void cameToFront();

  private:
    void take(bool isLogin);
    void endUnlessNeeded();

    Window window_;
    Log& log_;
    LaunchWaits waits_;
    bool isTold_ = false, isSettling_ = false;
};

} // namespace tidwen
