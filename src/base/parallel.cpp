#include "base/parallel.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace tidwen {

void parallelFor(std::size_t count, const std::function<void(std::size_t)>& work, unsigned workers) {
    if (workers == 0) workers = std::max(1u, std::thread::hardware_concurrency());
    std::atomic<std::size_t> next = 0;
    const auto run = [&] {
        for (auto i = next.fetch_add(1); i < count; i = next.fetch_add(1))
            work(i);
    };

    std::vector<std::thread> helpers;
    const auto wanted = std::min<std::size_t>(workers, count);
    try {
        while (helpers.size() + 1 < wanted)
            helpers.emplace_back(run);
    } catch (const std::system_error&) {
        // No more threads can be created: those that started, and this one, do the work.
    }
    run();
    for (auto& helper : helpers)
        helper.join();
}

} // namespace tidwen
