#include "cli/selection.h"

#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

Trace file(const char* path, MatchReason::Kind reason = MatchReason::Kind::exactBundleID,
           bool requiresRoot = false) {
    return makeTrace(TraceCategory::supportFiles, action::MovePath{Path(path)}, {reason, "com.example.app"},
                     Reversibility::reversible, path, 10, requiresRoot);
}

Trace contested(const char* path) {
    auto trace = file(path);
    trace.contestedBy = "com.example.other";
    return trace;
}

Trace bundle(const char* path) {
    return makeTrace(TraceCategory::application, action::MovePath{Path(path)}, {}, Reversibility::reversible,
                     path, 10, false);
}

ScanResult result(const char* app, std::vector<Trace> traces) {
    ScanResult scanned;
    scanned.target.bundleURL = Path(app);
    scanned.target.bundleID = "com.example.app";
    scanned.traces = std::move(traces);
    return scanned;
}

/// What was found for one application with something of every sort.
std::vector<ScanResult> everySort() {
    return {result("/Applications/A.app",
                   {bundle("/Applications/A.app"), file("/L/safe"),
                    file("/L/named", MatchReason::Kind::nameToken),
                    file("/L/root", MatchReason::Kind::exactBundleID, true), contested("/L/contested"),
                    makeTrace(TraceCategory::keychain, action::DeleteKeychainItem{"secret", false}, {},
                              Reversibility::irreversibleDestructive, "secret", std::nullopt, false),
                    makeTrace(TraceCategory::systemExtensions, action::Guidance{{"go there", std::nullopt}},
                              {}, Reversibility::manualOnly, "tunnel", std::nullopt, false)})};
}

using Names = std::vector<std::string>;

Names namesOf(const std::vector<RemovalTarget>& targets) {
    Names names;
    for (const auto& target : targets)
        for (const auto& trace : target.traces)
            names.push_back(trace.displayName);
    return names;
}

TEST(Selection, TakesWhatTheRequestNames) {
    const auto found = everySort();
    const auto id = found[0].traces[1].id.string();
    struct Case {
        const char* why;
        SelectionRequest request;
        Names expected; ///< or the key of the refusal
    };
    using enum TraceRisk;
    const Case cases[] = {
        {"nothing chosen", {}, {"/Applications/A.app", "/L/safe", "/L/named"}},
        {"a reset keeps the application", {.mode = RemovalMode::reset}, {"/L/safe", "/L/named"}},
        {"tiers, never what is contested", {.tiers = std::set{safe}}, {"/Applications/A.app", "/L/safe"}},
        {"a tier with loss was asked for", {.tiers = std::set{sensitive}}, {"/L/root", "secret"}},
        {"by identifier", {.selectors = {id}}, {"/L/safe"}},
        {"by path, also a contested one", {.selectors = {"/L/contested/"}}, {"/L/contested"}},
        {"by name, joined", {.selectors = {"secret,/L/root"}}, {"/L/root", "secret"}},
        {"unknown", {.selectors = {"/L/safe", "/L/other"}}, {"cli.select.unknown %@"}},
        {"unknown part", {.selectors = {"/L/safe,/L/other"}}, {"cli.select.unknown %@"}},
        {"empty", {.selectors = {""}}, {"cli.select.unknown %@"}},
        {"by hand only", {.selectors = {"tunnel"}}, {"cli.select.byHandOnly %@"}},
        {"stays in a reset",
         {.mode = RemovalMode::reset, .selectors = {"/Applications/A.app"}},
         {"cli.select.staysInReset %@"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto chosen = chooseTraces(found, c.request, HostPaths(std::nullopt));
        EXPECT_EQ(chosen ? namesOf(*chosen) : Names{chosen.error().key}, c.expected);
    }
}

TEST(Selection, TakesEachItemOnce) {
    const std::vector<ScanResult> found = {
        result("/Applications/A.app", {file("/L/Maker/child"), file("/L/shared")}),
        result("/Applications/B.app", {file("/L/shared"), file("/L/Maker")}),
        result("/Applications/C.app", {file("/L/Maker/child")}),
    };
    const auto chosen = chooseTraces(found, {}, HostPaths(std::nullopt));
    ASSERT_TRUE(chosen);
    EXPECT_EQ(namesOf(*chosen), (Names{"/L/shared", "/L/Maker"}));
    EXPECT_EQ(chosen->size(), 2U) << "an application of which nothing is left to take drops out";
    EXPECT_TRUE(leftInPlace(found, *chosen, RemovalMode::uninstall).empty());
}

TEST(Selection, SelectorsMayBePathsOfThisMachine) {
    const test::TemporaryVolume volume;
    volume.write("/L/with, comma", "x");
    const auto chosen =
        chooseTraces({result("/Applications/A.app", {file("/L/with, comma")})},
                     {.selectors = {volume.host("/L/with, comma").string()}}, HostPaths(volume.hostRoot()));
    ASSERT_TRUE(chosen) << chosen.error().key;
    EXPECT_EQ(namesOf(*chosen), Names{"/L/with, comma"});
}

TEST(Selection, ReadsTiers) {
    using enum TraceRisk;
    EXPECT_EQ(parseTiers({"safe,review", "sensitive"}), (std::set{safe, review, sensitive}));
    EXPECT_EQ(parseTiers({"safe,"}).error(), (Message{"cli.risk.unknown %@", {""}}));
    EXPECT_EQ(parseTiers({"Safe"}).error(), (Message{"cli.risk.unknown %@", {"Safe"}}));
}

} // namespace
} // namespace tidwen
