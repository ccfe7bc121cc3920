#include "base/executor.h"

#include <algorithm>
#include <utility>

namespace tidwen {

void MainQueue::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        work_.push_back(std::move(work));
    }
    arrived_.notify_one();
}

std::size_t MainQueue::drain() {
    std::size_t done = 0;
    for (;;) {
        std::function<void()> next;
        {
            const std::lock_guard lock(mutex_);
            if (work_.empty()) return done;
            next = std::move(work_.front());
            work_.pop_front();
        }
        next();
        ++done;
    }
}

void MainQueue::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        std::function<void()> next;
        {
            std::unique_lock lock(mutex_);
            arrived_.wait(lock, [this] { return !work_.empty(); });
            next = std::move(work_.front());
            work_.pop_front();
        }
        next();
    }
}

WorkQueue::WorkQueue(unsigned threads) {
    for (unsigned i = 0; i < std::max(threads, 1u); ++i)
        threads_.emplace_back([this] { run(); });
}

WorkQueue::~WorkQueue() {
    finish();
}

void WorkQueue::finish() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    arrived_.notify_all();
    for (auto& thread : threads_)
        thread.join();
    threads_.clear();
}

void WorkQueue::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        work_.push_back(std::move(work));
    }
    arrived_.notify_one();
}

void WorkQueue::run() {
    for (;;) {
        std::function<void()> next;
        {
            std::unique_lock lock(mutex_);
            arrived_.wait(lock, [this] { return ending_ || !work_.empty(); });
            if (work_.empty()) return;
            next = std::move(work_.front());
            work_.pop_front();
        }
        next();
    }
}

SeparateThreads::~SeparateThreads() {
    for (auto& worker : workers_)
        worker.thread.join();
}

void SeparateThreads::post(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    std::erase_if(workers_, [](Worker& worker) {
        const bool isDone = worker.isDone;
        if (isDone) worker.thread.join();
        return isDone;
    });
    auto& worker = workers_.emplace_back();
    worker.thread = std::thread([&worker, work = std::move(work)]() mutable {
        std::exchange(work, nullptr)();
        worker.isDone = true;
    });
}

} // namespace tidwen
