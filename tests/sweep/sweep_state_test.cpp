#include "sweep/sweep_state.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

Trace trace(const std::string& name, std::int64_t size) {
    return makeTrace(TraceCategory::caches, action::MovePath{Path("/" + name)},
                     {MatchReason::Kind::exactBundleID, "x"}, Reversibility::reversible, name, size, false);
}

TEST(SweepState, PublishesOnlyTheNewestTreeAndCountsEachFindOnce) {
    MainQueue main, queue; // both stepped by hand
    SweepState state(main, queue);
    int changes = 0;
    const auto watching = state.changed.connect([&] { ++changes; });
    state.begin(Timestamp{});
    state.add({trace("a", 1), trace("b", 2)});
    state.add({trace("b", 2), trace("c", 3)});
    queue.drain();
    main.drain();
    EXPECT_EQ(changes, 1) << "older rebuilds were overtaken";
    EXPECT_EQ(state.snapshot().totalCount, 3);
    EXPECT_EQ(state.allIDs().size(), 3u);

    state.setFilter({.query = "b", .category = {}});
    queue.drain();
    main.drain();
    EXPECT_EQ(state.snapshot().tree.totalCount, 1);
    EXPECT_EQ(state.snapshot().totalCount, 3);
}

TEST(SweepState, MayEndWhileARebuildIsOnItsWay) {
    MainQueue main, queue;
    {
        SweepState state(main, queue);
        state.add({trace("a", 1)});
        queue.drain();
    }
    main.drain();
}

} // namespace
} // namespace tidwen
