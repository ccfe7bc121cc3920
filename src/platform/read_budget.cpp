#include "platform/read_budget.h"

#include <ctime>

namespace tidwen {

namespace {

/// Upper bound for one call that does not wait and follows no long path.
constexpr std::chrono::microseconds longest{50};
/// The number of calls measured exactly after a slow one: a volume that makes every call slow is charged for
/// nearly all of them.
constexpr int exactAfterLong = 64;

thread_local int exactLeft = 0;

std::chrono::nanoseconds wallTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace

std::chrono::nanoseconds ReadBudget::threadTime() {
    timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

ReadBudget::Work::Work(const ReadBudget* budget, Measure measure) : budget_(budget) {
    if (!budget) return;
    const bool isExact = measure == Measure::exactly || budget->clock_ != threadTime || exactLeft > 0;
    if (measure == Measure::cheaply && exactLeft > 0) --exactLeft;
    clock_ = isExact ? budget->clock_ : wallTime;
    start_ = clock_();
}

ReadBudget::Work::~Work() {
    if (!budget_) return;
    std::chrono::nanoseconds spent = clock_() - start_;
    if (spent > longest) {
        exactLeft = exactAfterLong;
        if (clock_ == wallTime) spent = longest; // how much of that was processor time is unknown
    }
    budget_->left_->nanoseconds -= spent.count();
}

} // namespace tidwen
