#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace tidwen::bench {

/// Seconds that `work` takes: the median of `rounds` runs, after one that warms the caches.
template<class Work>
double secondsOf(int rounds, Work work) {
    using Clock = std::chrono::steady_clock;
    work();
    std::vector<double> seconds;
    for (int round = 0; round < rounds; ++round) {
        const auto start = Clock::now();
        work();
        seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    }
    std::nth_element(seconds.begin(), seconds.begin() + rounds / 2, seconds.end());
    return seconds[static_cast<std::size_t>(rounds / 2)];
}

/// One line of a report: what was measured, the ratio, the target, and whether it holds.
inline bool printRatio(const char* what, double ratio, const char* relation, double target) {
    const bool holds = *relation == '>' ? ratio >= target : ratio <= target;
    std::printf("%-58s %8.2f   target %s %-6g %s\n", what, ratio, relation, target, holds ? "ok" : "MISSED");
    return holds;
}

} // namespace tidwen::bench
