#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace tidwen::bench {

// Times several works alternately and prints the ratio beside its target.

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Seconds per work: medians over `rounds` in which the works alternate, so that other load on the machine
/// affects all of them, after one round that warms the caches.
inline std::vector<double> secondsOf(int rounds, const std::vector<std::function<void()>>& works) {
    using Clock = std::chrono::steady_clock;
    std::vector<std::vector<double>> seconds(works.size());
    for (int round = 0; round <= rounds; ++round)
        for (std::size_t i = 0; i < works.size(); ++i) {
            const auto start = Clock::now();
            works[i]();
            if (round > 0) seconds[i].push_back(std::chrono::duration<double>(Clock::now() - start).count());
        }
    std::vector<double> medians;
    for (auto& each : seconds)
        medians.push_back(median(std::move(each)));
    return medians;
}

/// Prints one line of a report: what was measured, the ratio, the target; returns whether it is met.
inline bool printRatio(const char* what, double ratio, const char* relation, double target) {
    const bool holds = *relation == '>' ? ratio >= target : ratio <= target;
    std::printf("%-58s %8.2f   target %s %-6g %s\n", what, ratio, relation, target, holds ? "ok" : "MISSED");
    return holds;
}

} // namespace tidwen::bench
