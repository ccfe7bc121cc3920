#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "cli/arguments.h"
#include "cli/selection.h"
#include "operations/removal_operation.h"
#include "program/host_paths.h"
#include "removal/findings.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include "support/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {
namespace {

Trace file(const char* path, MatchReason::Kind reason = MatchReason::Kind::exactBundleID,
           bool requiresRoot = false) {
    return makeTrace(TraceCategory::supportFiles, action::MovePath{Path(path)}, {reason, "com.example.app"},
                     Reversibility::reversible, path, 10, requiresRoot);
}

Trace contested(const char* path) {
    auto trace = file(path);
    trace.contestedBy = Claimant{"com.example.other", "Other", Path("/Applications/Other.app")};
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
    scanned.target.name = "A";
    scanned.traces = std::move(traces);
    return scanned;
}

Trace permissions() {
    return makeTrace(TraceCategory::permissions, action::ResetPermissions{"com.example.app"}, {},
                     Reversibility::irreversibleHarmless, "com.example.app", std::nullopt, false);
}

/// The result for one application with traces of every kind.
std::vector<ScanResult> everySort() {
    return {result("/Applications/A.app",
                   {bundle("/Applications/A.app"), file("/L/safe"),
                    file("/L/named", MatchReason::Kind::nameToken), permissions(),
                    file("/L/root", MatchReason::Kind::exactBundleID, true), contested("/L/contested"),
                    makeTrace(TraceCategory::keychain, action::DeleteKeychainItem{"secret", false}, {},
                              Reversibility::irreversibleDestructive, "secret", std::nullopt, false),
                    makeTrace(TraceCategory::systemExtensions, action::Guidance{{{"go there"}, std::nullopt}},
                              {}, Reversibility::manualOnly, "tunnel", std::nullopt, false)})};
}

using Names = std::vector<std::string>;

Names namesOf(const std::vector<ScanResult>& found, const std::vector<Uuid>& ids) {
    Names names;
    for (const auto& result : found)
        for (const auto& trace : result.traces)
            if (std::ranges::find(ids, trace.id) != ids.end()) names.push_back(trace.displayName);
    return names;
}

TEST(Selection, TakesWhatTheRequestNames) {
    const auto found = everySort();
    const auto id = found[0].traces[1].id.string();
    using enum TraceRisk;
    const struct {
        const char* why;
        SelectionRequest request;
        Names expected; ///< or the key of the error
        RemovalMode mode = RemovalMode::uninstall;
    } cases[] = {
        {"a reset keeps the application", {.tiers = std::set{safe}}, {"/L/safe"}, RemovalMode::reset},
        {"tiers, never what is contested", {.tiers = std::set{safe}}, {"/Applications/A.app", "/L/safe"}},
        {"a tier with loss was asked for", {.tiers = std::set{sensitive}}, {"/L/root", "secret"}},
        {"by identifier", {.selectors = {id}}, {"/L/safe"}},
        {"by path, also a contested one", {.selectors = {"/L/contested/"}}, {"/L/contested"}},
        {"by the end of its path", {.selectors = {"root"}}, {"/L/root"}},
        {"the application by its identifier, as by default",
         {.selectors = {"com.example.app"}},
         {"/Applications/A.app", "/L/safe", "/L/named", "com.example.app"}},
        {"its data in a reset, in any letter case",
         {.selectors = {"a"}},
         {"/L/safe", "/L/named", "com.example.app"},
         RemovalMode::reset},
        {"by several components of its path, in any letter case", {.selectors = {"l/ROOT"}}, {"/L/root"}},
        {"a path in another letter case", {.selectors = {"/l/Safe"}}, {"/L/safe"}},
        {"a path is no end of one", {.selectors = {"/safe"}}, {"cli.select.unknown %@ %@"}},
        {"by name, joined", {.selectors = {"secret,/L/root"}}, {"/L/root", "secret"}},
        {"unknown", {.selectors = {"/L/safe", "/L/other"}}, {"cli.select.unknown %@ %@"}},
        {"unknown part", {.selectors = {"/L/safe,/L/other"}}, {"cli.select.unknown %@ %@"}},
        {"empty", {.selectors = {""}}, {"cli.select.unknown %@ %@"}},
        {"by hand only", {.selectors = {"tunnel"}}, {"cli.select.byHandOnly %@"}},
        {"stays in a reset",
         {.selectors = {"/Applications/A.app"}},
         {"cli.select.staysInReset %@"},
         RemovalMode::reset},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto chosen =
            chooseTraces(groupsOf(found), c.request, c.mode, HostPaths(std::nullopt), Texts());
        EXPECT_EQ(chosen ? namesOf(found, chosen->ids) : Names{chosen.error().key}, c.expected);
    }
}

TEST(Selection, TellsAnItemOfTwoTargetsFromTwoItemsOfOneName) {
    const std::vector found = {result("/A.app", {file("/L/shared"), file("/L/a/same")}),
                               result("/B.app", {file("/L/shared"), file("/L/b/same")})};
    const auto choose = [&](const char* selector) {
        return chooseTraces(groupsOf(found), {.selectors = {selector}}, RemovalMode::uninstall, HostPaths({}),
                            Texts());
    };
    for (const auto* selector : {"shared", "/L/shared"}) {
        const auto chosen = choose(selector);
        ASSERT_TRUE(chosen) << chosen.error().key;
        EXPECT_EQ(namesOf(found, chosen->named), (Names{"/L/shared", "/L/shared"}));
    }
    EXPECT_EQ(choose("same").error(),
              (Message{"cli.select.ambiguous %@ %@", {"same", "/L/a/same, /L/b/same"}}));
    EXPECT_TRUE(choose("A")->named.empty()) << "an application is not all of its items by name";
}

TEST(Selection, SelectorsMayBePathsOfThisMachine) {
    const test::TemporaryVolume volume;
    volume.write("/L/with, comma", "x");
    const std::vector found = {result("/Applications/A.app", {file("/L/with, comma")})};
    const auto chosen = chooseTraces(groupsOf(found), {.selectors = {volume.host("/L/with, comma").string()}},
                                     RemovalMode::uninstall, HostPaths(volume.hostRoot()), Texts());
    ASSERT_TRUE(chosen) << chosen.error().key;
    EXPECT_EQ(namesOf(found, chosen->ids), Names{"/L/with, comma"});
}

TEST(Selection, ReadsTiers) {
    using enum TraceRisk;
    const Texts texts; // prints keys as titles
    EXPECT_EQ(parseTiers({"safe, risk.Review.title", "SENSITIVE"}, texts),
              (std::set{safe, review, sensitive}));
    EXPECT_EQ(parseTiers({"safe,"}, texts).error(), invalidValue("--risk", "", "safe, review, sensitive"));
    EXPECT_EQ(parseTiers({"safer"}, texts).error(),
              invalidValue("--risk", "safer", "safe, review, sensitive"));
}

} // namespace
} // namespace tidwen
