#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace tidwen {

/// How much one run (a scan, a sweep, reading a history) may spend on reading file content. Each file has its
/// own limit, but a volume may name thousands of files at that limit, or one file thousands of times. Copies
/// share the remaining budget. Thread-safe.
class ReadBudget {
  public:
    struct Limits {
        std::int64_t bytes = std::int64_t{256} << 20; ///< of content read
        std::chrono::nanoseconds time =
            std::chrono::seconds(4); ///< of processor time on it, summed over all threads
    };
    using Clock = std::chrono::nanoseconds (*)();

    /// Processor time of the calling thread; waiting for a slow disk is not counted.
    static std::chrono::nanoseconds threadTime();

    ReadBudget() : ReadBudget(Limits{}) {}
    explicit ReadBudget(Limits limits, Clock clock = threadTime)
        : left_(std::make_shared<Left>(limits)), clock_(clock) {}

    bool isExhausted() const { return left_->bytes <= 0 || left_->nanoseconds <= 0; }

    void spendBytes(std::uint64_t bytes) const { left_->bytes -= static_cast<std::int64_t>(bytes); }

    /// Counts an item that is not read because the budget is exhausted.
    void leaveOut() const { ++left_->leftOut; }
    std::uint64_t leftOut() const { return left_->leftOut; }

    /// How time is measured: asking the kernel for processor time costs as much as a look at an item.
    enum class Measure {
        /// Processor time only for calls that follow a slow one, whether it was slow by work or by the disk;
        /// short calls are charged their wall-clock time.
        cheaply,
        exactly,
    };

    /// Charges the calling thread's time from construction to destruction. Must not be nested. Does nothing
    /// without a budget.
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
