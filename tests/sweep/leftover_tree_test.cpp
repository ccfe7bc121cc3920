#include "support/matchers.h"
#include "sweep/leftover_tree.h"
#include "sweep/sweep_state.h"

namespace tidwen {
namespace {

Trace trace(const std::string& name, std::optional<std::int64_t> size,
            TraceCategory category = TraceCategory::caches,
            MatchReason::Kind reason = MatchReason::Kind::exactBundleID,
            Reversibility reversibility = Reversibility::reversible) {
    return makeTrace(category, action::MovePath{Path("/" + name)}, {reason, "x"}, reversibility, name, size,
                     false);
}

std::vector<std::string> titles(const LeftoverGroup& group) {
    return eachOf(group.rows, [](const auto& row) { return std::string(row.title); });
}

TEST(LeftoverFilter, PassesOnlyWhatEveryConditionAllows) {
    struct Case {
        const char* why;
        LeftoverFilter filter;
        Trace trace;
        bool passes;
    };
    const LeftoverFilter megabyte{.query = "", .category = {}, .floor = LeftoverFilter::SizeFloor::mb1};
    const Case cases[] = {
        {"no condition", {}, trace("a", 1), true},
        {"one byte below a decimal megabyte", megabyte, trace("a", 999'999), false},
        {"a decimal megabyte", megabyte, trace("a", 1'000'000), true},
        {"no size passes every floor",
         {.query = "", .category = {}, .floor = LeftoverFilter::SizeFloor::mb100},
         trace("a", std::nullopt),
         true},
        {"letter case and normal form do not count",
         {.query = "CAFE\xCC\x81 ", .category = {}},
         trace("My Caf\xC3\xA9", 1),
         true},
        {"another text", {.query = "tea", .category = {}}, trace("coffee", 1), false},
        {"another category", {.query = "", .category = TraceCategory::logs}, trace("a", 1), false},
        {"another tier",
         {.query = "", .risks = {TraceRisk::sensitive}, .category = {}},
         trace("a", 1),
         false},
        {"what only the user can do",
         {},
         trace("a", 1, TraceCategory::systemExtensions, MatchReason::Kind::exactBundleID,
               Reversibility::manualOnly),
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(c.filter.passes(c.trace), c.passes);
        // The tree asks the same question its own, faster way.
        EXPECT_EQ(buildTree({c.trace}, c.filter).totalCount, c.passes ? 1 : 0);
    }
    EXPECT_FALSE((LeftoverFilter{.query = " \n ", .category = {}}).isActive());
    EXPECT_TRUE(megabyte.isActive());
}

TEST(LeftoverTree, OrdersRowsAndLeavesEmptyTiersOut) {
    const std::vector<Trace> traces = {
        trace("beta 10", 5),
        trace("Beta 9", 5),
        trace("alpha", std::nullopt),
        trace("zeta", 900),
        trace("log", 7, TraceCategory::logs),
        trace("named", 1, TraceCategory::caches, MatchReason::Kind::nameToken),
        trace("by hand", std::nullopt, TraceCategory::systemExtensions, MatchReason::Kind::exactBundleID,
              Reversibility::manualOnly),
    };
    const auto tree = buildTree(traces, {});
    ASSERT_EQ(tree.tiers.size(), 2u);
    EXPECT_EQ(tree.tiers[0].risk, TraceRisk::safe);
    EXPECT_EQ(tree.tiers[1].risk, TraceRisk::review);
    ASSERT_EQ(tree.tiers[0].groups.size(), 2u);
    EXPECT_THAT(titles(tree.tiers[0].groups[0]), ElementsAre("zeta", "Beta 9", "beta 10", "alpha"));
    EXPECT_EQ(tree.tiers[0].groups[0].bytes, 910);
    EXPECT_EQ(tree.tiers[0].ids().size(), 5u);
    EXPECT_THAT(tree.counts, ElementsAre(5, 1, 0));
    EXPECT_EQ(tree.manual.size(), 1u);
    EXPECT_EQ(summarize(tree).total, 6);

    const auto byName =
        buildTree(tree.list, {.query = "", .category = {}, .order = LeftoverFilter::Order::name});
    EXPECT_THAT(titles(byName.tiers[0].groups[0]), ElementsAre("alpha", "Beta 9", "beta 10", "zeta"));
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
