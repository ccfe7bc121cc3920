#include "base/executor.h"
#include "base/progress_relay.h"
#include "base/step_progress.h"

#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace tidwen {
namespace {

TEST(ProgressRelay, HandsOverTheNewestStepAloneAndNothingOnceItIsGone) {
    MainQueue main;
    std::size_t shown = 0;
    std::optional<ProgressRelay> relay(std::in_place, main,
                                       [&](const StepProgress& progress) { shown = progress.step; });
    const auto observer = relay->observer();
    std::thread([&] {
        for (std::size_t step = 1; step <= 10'000; ++step)
            observer({.step = step, .total = 10'000});
    }).join();
    EXPECT_EQ(main.drain(), 1u) << "the main thread is not flooded";
    EXPECT_EQ(shown, 10'000u);
    observer({.step = 5, .total = 5});
    relay.reset();
    observer({.step = 6, .total = 6});
    main.drain();
    EXPECT_EQ(shown, 10'000u);
}

} // namespace
} // namespace tidwen
