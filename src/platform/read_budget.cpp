#include "platform/read_budget.h"

#include <ctime>

namespace tidwen {

std::chrono::nanoseconds ReadBudget::threadTime() {
    timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace tidwen
