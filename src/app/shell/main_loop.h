#pragma once

#include "base/executor.h"

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>

namespace tidwen {

/// The main thread as an executor, over the toolkit's event loop. Between pieces of work the window paints.
/// Outlives everything that posts to it.
class MainLoop final : public QObject, public Executor {
  public:
    void post(std::function<void()> work) override;

  protected:
    bool event(QEvent* event) override;

  private:
    bool runOne();

    std::mutex mutex_;
    std::deque<std::function<void()>> work_;
    bool isAwake_ = false; ///< an event is on its way
};

} // namespace tidwen
