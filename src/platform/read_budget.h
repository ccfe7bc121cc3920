#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace tidwen {

/// What one run of a reader (a scan, a sweep, the reading of a history) may spend on the content of files.
/// Every file has a limit of its own, but a disk may name thousands of files at their limits, or one file
/// thousands of times. Copies share what is left. May be used from any thread.
class ReadBudget {
  public:
    struct Limits {
        std::int64_t bytes = std::int64_t{256} << 20;            ///< of content read
        std::chrono::nanoseconds time = std::chrono::seconds(4); ///< of work on it, all threads together
    };
    using Clock = std::chrono::nanoseconds (*)();

    /// Processor time of the calling thread: waiting for a slow disk costs nothing.
    static std::chrono::nanoseconds threadTime();

    ReadBudget() : ReadBudget(Limits{}) {}
    explicit ReadBudget(Limits limits, Clock clock = threadTime)
        : left_(std::make_shared<Left>(limits)), clock_(clock) {}

    bool isExhausted() const { return left_->bytes <= 0 || left_->nanoseconds <= 0; }

    void spendBytes(std::uint64_t bytes) const { left_->bytes -= static_cast<std::int64_t>(bytes); }

    /// Counts something that is not read because the budget is exhausted.
    void leaveOut() const { ++left_->leftOut; }
    std::uint64_t leftOut() const { return left_->leftOut; }

    /// Processor time is asked of the kernel, which takes as long as a look at an item.
    enum class Measure {
        /// Asked only around some of the calls: those that come after one that took long, be it for work or
        /// for a slow disk. What is short costs as much as the wall clock says.
        cheaply,
        exactly,
    };

    /// Spends the time of the calling thread from now until it is destroyed. Not to be nested. Without a
    /// budget it does nothing.
    class Work {
      public:
        explicit Work(const ReadBudget* budget, Measure measure = Measure::cheaply);
        explicit Work(const ReadBudget& budget, Measure measure = Measure::cheaply)
            : Work(&budget, measure) {}
        ~Work();
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;

      private:
        const ReadBudget* budget_;
        Clock clock_ = nullptr;
        std::chrono::nanoseconds start_{};
    };

  private:
    struct Left {
        explicit Left(const Limits& limits) : bytes(limits.bytes), nanoseconds(limits.time.count()) {}
        std::atomic<std::int64_t> bytes;
        std::atomic<std::int64_t> nanoseconds;
        std::atomic<std::uint64_t> leftOut = 0;
    };
    std::shared_ptr<Left> left_;
    Clock clock_;
};

} // namespace tidwen
