#include "base/parallel.h"

#include <atomic>
#include <gtest/gtest.h>
#include <vector>

namespace tidwen {
namespace {

TEST(ParallelFor, DoesEachIndexOnce) {
    for (const unsigned workers : {0u, 1u, 3u, 50u})
        for (const std::size_t count : {0u, 1u, 2u, 1000u}) {
            std::vector<std::atomic<int>> done(count);
            parallelFor(
                count, [&](std::size_t i) { ++done[i]; }, workers);
            for (const auto& times : done)
                EXPECT_EQ(times, 1);
        }
}

} // namespace
} // namespace tidwen
