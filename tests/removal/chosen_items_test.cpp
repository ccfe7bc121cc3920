#include "removal/chosen_items.h"
#include "removal/removal_texts.h"

#include <gmock/gmock.h>

namespace tidwen::test {
namespace {

using Names = std::vector<std::string>;

Trace trace(const char* path, Reversibility reversibility = Reversibility::reversible,
            std::optional<std::int64_t> size = std::nullopt, bool requiresRoot = false,
            MatchReason::Kind reason = MatchReason::Kind::exactBundleID) {
    return makeTrace(TraceCategory::caches, action::MovePath{Path(path)}, {reason, "x"}, reversibility, path,
                     size, requiresRoot);
}

ScanResult found(std::vector<Trace> traces) {
    ScanResult result;
    result.traces = std::move(traces);
    return result;
}

TEST(ChosenItems, EachIsTakenOnceAndWhatGoesAlongIsNotLeft) {
    const std::vector<ScanResult> all = {found({trace("/L/Maker/child"), trace("/L/shared")}),
                                         found({trace("/L/shared"), trace("/L/Maker")}),
                                         found({trace("/L/Maker/child")}), found({trace("/L/other")})};
    std::vector<RemovalTarget> chosen;
    for (std::size_t i = 0; i < 3; ++i)
        chosen.push_back({.target = {}, .traces = all[i].traces});
    takeEachItemOnce(chosen);
    ASSERT_EQ(chosen.size(), 2u) << "an application of which nothing is left to take drops out";
    EXPECT_EQ(chosen[0].traces[0].displayName, "/L/shared");
    EXPECT_EQ(chosen[1].traces[0].displayName, "/L/Maker");
    const auto left = leftInPlace(all, chosen, RemovalMode::uninstall);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].displayName, "/L/other");
}

TEST(RemovalSummary, AndItsWords) {
    using enum Reversibility;
    const struct {
        const char* why;
        std::vector<Trace> selection;
        Names lines; ///< summary, tiers, then what else there is to say
    } cases[] = {
        {"nothing counts", {trace("/a", manualOnly, 5)}, {"confirm.summary 0 0 bytes"}},
        {"tiers in order, sizes where known",
         {trace("/a", reversible, 1000, true), trace("/b"), trace("/c", reversible, 2000)},
         {"confirm.summary 3 3 kB", "risk.safe.count 2, 2 kB", "risk.sensitive.count 1, 1 kB",
          "confirm.reversible 3", "confirm.password"}},
        {"no size known",
         {trace("/a", irreversibleHarmless, std::nullopt, false, MatchReason::Kind::nameToken)},
         {"confirm.summary 1 0 bytes", "risk.review.count 1", "confirm.permissionsReset"}},
        {"lost for good",
         {trace("/a", irreversibleDestructive, 0)},
         {"confirm.summary 1 0 bytes", "risk.safe.count 1, 0 bytes", "confirm.permanent.heading 1", "/a"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto words = confirmationTexts(summarize(c.selection), "It", RemovalMode::reset, Texts());
        EXPECT_EQ(words.title, "confirm.reset.title It");
        Names lines = {words.summary};
        lines.insert(lines.end(), words.breakdown.begin(), words.breakdown.end());
        for (const auto& line :
             {words.reversible, words.permanentHeading, words.permissionsReset, words.password})
            if (line) lines.push_back(*line);
        lines.insert(lines.end(), words.permanent.begin(), words.permanent.end());
        EXPECT_EQ(lines, c.lines);
    }
}

} // namespace
} // namespace tidwen::test
