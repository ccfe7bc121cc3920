#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tidwen {

/// Takes work to be done later. `post` may be called from any thread; work must not throw.
class Executor {
  public:
    virtual ~Executor() = default;
    virtual void post(std::function<void()> work) = 0;
};

/// Work done by whoever owns the queue, on the thread that calls `drain` or `runUntil`: the main thread of
/// the terminal program, and the hand-stepped executor of tests.
class MainQueue : public Executor {
  public:
    void post(std::function<void()> work) override;
    /// Does what is queued now and what that queues, without waiting. Gives the number of pieces done.
    std::size_t drain();
    /// Does work as it comes, waiting in between, until `done` answers true after a piece of work.
    void runUntil(const std::function<bool()>& done);

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> work_;
};

/// Threads of its own that take work in order. One thread makes it a serial queue. Ending it finishes what is
/// queued first.
class WorkQueue : public Executor {
  public:
    explicit WorkQueue(unsigned threads = 1);
    ~WorkQueue() override;
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    void post(std::function<void()> work) override;

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> work_;
    bool ending_ = false;
    std::vector<std::thread> threads_;
};

} // namespace tidwen
