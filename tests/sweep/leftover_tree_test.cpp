#include "base/executor.h"
#include "base/list_change.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/temporary_folder.h"
#include "sweep/leftover_filter.h"
#include "sweep/leftover_tree.h"
#include "sweep/sweep_state.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

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
        // The tree filters with a faster implementation of its own.
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
    EXPECT_EQ(tree.tiers[0].groups[0].size.bytes, 910);
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
    const Texts texts;
    SweepState state(main, queue, texts);
    int changes = 0;
    const auto watching = state.changed.connect([&](SweepChange) { ++changes; });
    state.begin(Timestamp{});
    state.add({trace("a", 1), trace("b", 2)});
    state.add({trace("b", 2), trace("c", 3)});
    queue.drain();
    main.drain();
    EXPECT_EQ(changes, 1) << "older rebuilds are dropped";
    EXPECT_EQ(state.snapshot().totalCount, 3);
    EXPECT_EQ(state.allIDs().size(), 3u);

    state.setFilter({.query = "b", .category = {}});
    queue.drain();
    main.drain();
    EXPECT_EQ(state.snapshot().tree.totalCount, 1);
    EXPECT_EQ(state.snapshot().totalCount, 3);
}

std::string shown(const SweepRow& row) {
    return row.trace ? row.trace->displayName
                     : std::string(row.category ? name(*row.category) : name(row.risk)) + " "
                           + std::to_string(row.count) + " " + std::to_string(row.size.bytes);
}

TEST(SweepState, TellsWhichRowsComeGoAndChange) {
    test::SteppedQueues queues;
    const Texts texts;
    SweepState state(queues.main, queues.background, texts);
    std::vector<RowChange> steps;
    const auto watching = state.rows.changed.connect([&](const RowChange& step) { steps.push_back(step); });
    state.add({trace("b", 2), trace("c", 1)});
    queues.settle();
    steps.clear();
    state.add({trace("a", 3), trace("log", 7, TraceCategory::logs)});
    queues.settle();
    EXPECT_THAT(eachOf(state.rows.rows(), shown),
                ElementsAre("safe 4 13", "caches 3 6", "a", "b", "c", "logs 1 7", "log"));
    using enum RowChange::Kind;
    EXPECT_THAT(steps,
                ElementsAre(RowChange{inserted, 2, 1}, RowChange{inserted, 5, 2}, RowChange{changed, 0, 2}));

    steps.clear();
    state.setFilter({.query = "b", .category = {}});
    queues.settle();
    EXPECT_THAT(steps,
                ElementsAre(RowChange{removed, 4, 3}, RowChange{removed, 2, 1}, RowChange{changed, 0, 2}));

    steps.clear();
    state.setFilter({.query = "", .category = {}, .order = LeftoverFilter::Order::name});
    queues.settle();
    EXPECT_THAT(steps,
                ElementsAre(RowChange{inserted, 2, 1}, RowChange{inserted, 4, 3}, RowChange{changed, 0, 2}));
    EXPECT_EQ(shown(state.rows.rows()[4]), "c");
}

TEST(SweepState, OrdersInTheLanguageOfNow) {
    const test::TemporaryFolder resources;
    std::filesystem::create_directories(resources.path() / "sv.lproj");
    std::ofstream(resources.path() / "sv.lproj/Localizable.strings") << "\"size.over %@\" = \"mer än %@\";";
    test::SteppedQueues queues;
    Texts texts;
    SweepState state(queues.main, queues.background, texts);
    auto large = trace("z", 1'000'000);
    large.isSizePartial = true;
    state.finish({trace("\xC3\xA4", 1), large});
    state.setFilter({.query = "", .category = {}, .order = LeftoverFilter::Order::name});
    queues.settle();
    EXPECT_EQ(shown(state.rows.rows()[2]), "\xC3\xA4");
    texts = Texts::load(resources.path(), "sv");
    state.arrange();
    queues.settle();
    EXPECT_EQ(shown(state.rows.rows()[2]), "z");
    EXPECT_EQ(state.snapshot().totalSizeText, "mer \xC3\xA4n 1 MB");
}

TEST(SweepState, MayEndWhileARebuildIsOnItsWay) {
    MainQueue main, queue;
    const Texts texts;
    {
        SweepState state(main, queue, texts);
        state.add({trace("a", 1)});
        queue.drain();
    }
    main.drain();
}

} // namespace
} // namespace tidwen
