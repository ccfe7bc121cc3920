#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace tidwen {

/// Queues work to run later. `post` may be called from any thread; work must not throw.
class Executor {
  public:
    virtual ~Executor() = default;
    virtual void post(std::function<void()> work) = 0;
};

/// Runs work on the thread that calls `drain` or `runUntil`: the main thread of the terminal program, or a
/// test that steps through it by hand.
class MainQueue : public Executor {
  public:
    void post(std::function<void()> work) override;
    /// Runs what is queued now and what that work queues in turn, without waiting. Returns the number of
    /// items run.
    std::size_t drain();
    /// Runs work as it arrives, waiting in between, until `done` returns true after an item.
    void runUntil(const std::function<bool()>& done);

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> work_;
};

/// A pool of threads that take work in order; with one thread, a serial queue. The destructor finishes the
/// queued work first, unless `finish` has.
class WorkQueue : public Executor {
  public:
    explicit WorkQueue(unsigned threads = 1);
    ~WorkQueue() override;
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    void post(std::function<void()> work) override;
    /// Waits for the queued work and ends the threads, so that the destructor does not wait. What is posted
    /// later is never run. On any thread but these; once.
    void finish();

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> work_;
    bool ending_ = false;
    std::vector<std::thread> threads_;
};

/// Runs each work on a thread of its own, so that none waits for another that waits for a disk. The
/// destructor waits for all.
class SeparateThreads : public Executor {
  public:
    SeparateThreads() = default;
    ~SeparateThreads() override;
    SeparateThreads(const SeparateThreads&) = delete;
    SeparateThreads& operator=(const SeparateThreads&) = delete;

    void post(std::function<void()> work) override;

  private:
    struct Worker {
        std::atomic<bool> isDone = false;
        std::thread thread;
    };

    std::mutex mutex_;
    std::list<Worker> workers_;
};

} // namespace tidwen
