#include "base/path.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "removal/chosen_items.h"
#include "removal/findings.h"
#include "removal/removal_aftermath.h"
#include "removal/removal_choice.h"
#include "removal/removal_plan.h"
#include "removal/removal_report.h"
#include "removal/removal_subject.h"
#include "removal/removal_summary.h"
#include "removal/removal_texts.h"
#include "removal/unseen.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/trace_category.h"
#include "sweep/orphan_scanner.h"

#include "support/fixtures.h"
#include "support/matchers.h"

#include <algorithm>
#include <cstdint>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen::test {
namespace {

using Names = std::vector<std::string>;

Trace trace(const char* path, Reversibility reversibility = Reversibility::reversible,
            std::optional<std::int64_t> size = std::nullopt, bool requiresRoot = false,
            MatchReason::Kind reason = MatchReason::Kind::exactBundleID) {
    return makeTrace(TraceCategory::caches, action::MovePath{Path(path)}, {reason, "x"}, reversibility, path,
                     size, requiresRoot);
}

std::vector<Uuid> idsOf(const Findings& findings) {
    std::vector<Uuid> ids;
    for (const auto& group : findings.groups())
        for (const auto& trace : group.traces)
            ids.push_back(trace.id);
    return ids;
}

TEST(RemovalChoice, TakesBothFilesOfAReceipt) {
    std::vector<Trace> traces;
    for (const auto* name : {"a.bom", "a.plist", "b.bom"}) {
        traces.push_back(trace((std::string("/private/var/db/receipts/com.example.") + name).c_str()));
        traces.back().category = TraceCategory::receipts;
    }
    const auto findings = std::make_shared<const Findings>(
        std::make_shared<const OrphanScanResult>(OrphanScanResult{{{"a", "A", traces}}, {}}));
    RemovalChoice choice(findings, RemovalSubject::Kind::leftovers);
    choice.select({traces[0].id}, {traces[0].id});
    EXPECT_TRUE(choice.isSelected(traces[0].id) && choice.isSelected(traces[1].id));
    EXPECT_FALSE(choice.isSelected(traces[2].id));
    choice.setSelected({traces[1].id}, false);
    EXPECT_FALSE(choice.isSelected(traces[0].id));
}

TEST(RemovalChoice, TakesEachItemOnceAndSaysWhyTheOthersStay) {
    auto contested = trace("/L/contested");
    contested.contestedBy = Claimant{"com.example.other", "Other", Path("/Other.app")};
    const auto findings =
        std::make_shared<const Findings>(std::make_shared<const OrphanScanResult>(OrphanScanResult{
            {{"a", "A", {trace("/L/Maker/child"), trace("/L/shared")}},
             {"b", "B", {trace("/L/shared"), trace("/L/Maker"), trace("/L/Maker 2")}},
             {"c", "C", {trace("/L/Maker/child"), trace("/L/Maker/deep/er/child")}},
             {"d", "D", {trace("/L/other"), contested, trace("/by hand", Reversibility::manualOnly)}}},
            {}}));
    RemovalChoice choice(findings, RemovalSubject::Kind::leftovers);
    EXPECT_EQ(choice.refusal()->reason.key, "error.nothingToRemove");
    choice.setSelected(idsOf(*findings), true);
    EXPECT_FALSE(choice.isSelected(findings->groups()[3].traces[2].id)) << "only the user can deal with it";
    choice.setSelected({findings->groups()[3].traces[0].id, contested.id}, false);

    Names going, staying;
    for (const auto& target : choice.targets())
        for (const auto& each : target.traces)
            going.push_back(target.target.name + each.displayName);
    for (const auto& left : choice.remainders())
        for (const auto& each : left.traces)
            staying.push_back(each.trace.displayName + ": " + Texts().text(each.describe()));
    EXPECT_EQ(going, (Names{"A/L/shared", "B/L/Maker", "B/L/Maker 2"})) << "of C nothing is left to take";
    EXPECT_EQ(staying,
              (Names{"/L/other: left.notChosen", "/L/contested: left.contested com.example.other /Other.app",
                     "/by hand: left.byHand"}));
    EXPECT_EQ(choice.subject().text(Texts()), "confirm.subject.leftovers 3");
    EXPECT_EQ(choice.summary().totalCount, 3);

    RemovalChoice other = choice;
    other.select({contested.id});
    EXPECT_EQ(other.summary().totalCount, 1);
    EXPECT_EQ(choice.summary().totalCount, 3) << "a copy is independent";
}

TEST(RemovalChoice, GivesASharedItemToTheStrongestClaim) {
    const auto claim = [](const char* path, MatchReason::Kind kind, const char* value) {
        auto found = trace(path);
        found.reason = {kind, value};
        return found;
    };
    using enum MatchReason::Kind;
    std::vector<OrphanGroup> groups = {
        {"a.b",
         "A",
         {claim("/L/a.b.beta", exactBundleID, "a.b"), claim("/L/B", nameToken, "B"),
          claim("/L/both", executableName, "tool")}},
        {"a.b.beta",
         "Beta",
         {claim("/L/a.b.beta", exactBundleID, "a.b.beta"), claim("/L/B", executableName, "Beta tool"),
          claim("/L/both", executableName, "tool")}}};
    for (int order = 0; order < 2; ++order, std::ranges::reverse(groups)) {
        const auto findings = std::make_shared<const Findings>(
            std::make_shared<const OrphanScanResult>(OrphanScanResult{groups, {}}));
        RemovalChoice choice(findings, RemovalSubject::Kind::leftovers);
        choice.setSelected(idsOf(*findings), true);
        std::set<std::string> going;
        for (const auto& target : choice.targets())
            for (const auto& each : target.traces)
                EXPECT_TRUE(going.insert(target.target.name + each.displayName).second);
        const auto& first = groups.front().name;
        EXPECT_EQ(going, (std::set<std::string>{"A/L/B", "Beta/L/a.b.beta", first + "/L/both"}));
        for (const auto& step : buildRemovalPlan(choice.targets(), {Path("/Q"), true}, choice.mode())) {
            const bool isShared = step.displayName == "/L/both";
            EXPECT_EQ(step.sharedWith, isShared ? Names{groups.back().bundleID} : Names())
                << step.displayName;
        }
    }
}

TEST(RemovalChoice, CountsAResetOnlyOfRecordedPermissions) {
    for (const bool isRecorded : {false, true}) {
        ScanResult scan;
        scan.traces = {trace("/L/a"),
                       makeTrace(TraceCategory::permissions, action::ResetPermissions{"com.example.a"}, {},
                                 Reversibility::irreversibleHarmless, "com.example.a", {}, false)};
        if (isRecorded) scan.permissions.grants.resize(1);
        const auto findings = std::make_shared<const Findings>(
            std::make_shared<const std::vector<ScanResult>>(1, scan), alice());
        RemovalChoice choice(findings, RemovalSubject::Kind::applications);
        choice.setSelected(idsOf(*findings), true);
        EXPECT_EQ(choice.summary().resetsPermissions, isRecorded);
        EXPECT_EQ(choice.summary().totalCount, isRecorded ? 2 : 1);
        EXPECT_EQ(choice.targets().front().traces.size(), 2u) << "what is recorded meanwhile is reset, too";
    }
}

TEST(RemovalReport, MissesWhatItResetAndCouldNotSeeBefore) {
    ScanResult scan;
    scan.permissions.unreadable = {PermissionGrant::Scope::system};
    EXPECT_FALSE(scan.isComplete());
    EXPECT_EQ(unseenIn({scan, scan}, alice()).unreadableLocations,
              std::vector{PermissionAudit::databasePath(PermissionGrant::Scope::system, alice())});

    const PermissionGrant grant;
    for (const bool resets : {false, true})
        for (const bool survives : {false, true}) {
            RemovalReport report;
            report.operations.resize(1);
            report.operations[0].bundleID = resets ? "com.example.a" : "com.example.b";
            report.operations[0].kind = operation::ResetPermissions{report.operations[0].bundleID};
            report.verification.emplace().apps = {{.bundleID = "com.example.a",
                                                   .name = "A",
                                                   .tccSurvivors = std::vector(survives ? 1 : 0, grant)}};
            EXPECT_EQ(report.missedAPermission(), resets && survives);
            auto claimed = makeTrace(TraceCategory::permissions, action::ResetPermissions{"com.example.a"},
                                     {}, Reversibility::irreversibleHarmless, "com.example.a", {}, false);
            claimed.contestedBy.emplace().name = "Another copy";
            report.left = {{.target = {.bundleID = "com.example.a"}, .traces = {{claimed}}}};
            EXPECT_EQ(report.keepsItsPermissions("com.example.a"), !resets);
        }
}

TEST(RemovalSummary, AndItsWords) {
    using enum Reversibility;
    auto partial = trace("/a", reversible, 1000);
    partial.isSizePartial = true;
    const struct {
        const char* why;
        std::vector<Trace> selection;
        Names lines; ///< summary, tiers, then the other lines
        MoveRights rights = MoveRights::administrator;
    } cases[] = {
        {"nothing counts", {trace("/a", manualOnly, 5)}, {"confirm.summary 0 0 bytes"}},
        {"tiers in order, sizes where known",
         {trace("/a", reversible, 1000, true), trace("/b"), trace("/c", reversible, 2000)},
         {"confirm.summary 3 3 kB", "risk.safe.count 2, 2 kB", "risk.sensitive.count 1, 1 kB",
          "confirm.reversible 3", "confirm.password"}},
        {"not all of it measured",
         {partial, trace("/b", reversible, 1000)},
         {"confirm.summary 2 size.over 2 kB", "risk.safe.count 2, size.over 2 kB", "confirm.reversible 2"}},
        {"where nobody can be asked",
         {trace("/a", reversible, 1000, true)},
         {"confirm.summary 1 1 kB", "risk.sensitive.count 1, 1 kB", "confirm.reversible 1"},
         MoveRights::own},
        {"no size known",
         {trace("/a", irreversibleHarmless, std::nullopt, false, MatchReason::Kind::nameToken)},
         {"confirm.summary 1 0 bytes", "risk.review.count 1", "confirm.permissionsReset"}},
        {"lost for good",
         {trace("/a", irreversibleDestructive, 0)},
         {"confirm.summary 1 0 bytes", "risk.safe.count 1, 0 bytes", "confirm.permanent.heading 1", "/a"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto words =
            confirmationTexts(summarize(eachOf(c.selection, [](const Trace& each) { return &each; })), "It",
                              RemovalMode::reset, c.rights, Texts());
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
