#include "base/path.h"
#include "base/texts.h"
#include "cli/json/output.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "quarantine/history.h"
#include "removal/removal_report.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/removability.h"
#include "scan/policy/trace_category.h"

#include "base/json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

using Json = nlohmann::json;

Json parsed(const std::string& document) {
    const auto value = parseJson(document);
    EXPECT_TRUE(value) << document;
    return value.value_or(Json());
}

Trace traceOf(TraceAction action, MatchReason reason = {}) {
    return makeTrace(TraceCategory::launchItems, std::move(action), std::move(reason),
                     Reversibility::reversible, "x", std::nullopt, false);
}

TEST(JsonOutput, ActionsAndReasonsAreObjectsOfTheirKind) {
    const struct {
        TraceAction action;
        const char* expected;
    } cases[] = {
        {action::MovePath{Path("/Library/X")}, R"({"kind":"movePath","url":"/Library/X"})"},
        {action::BootoutAndMove{"l", Path("/a.plist"), true},
         R"({"kind":"bootoutAndMove","label":"l","plist":"/a.plist","isSystemDomain":true})"},
        {action::Bootout{"l", false}, R"({"kind":"bootout","label":"l","isSystemDomain":false})"},
        {action::ResetPermissions{"com.example.app"},
         R"({"kind":"resetPermissions","bundleID":"com.example.app"})"},
        {action::DeleteKeychainItem{"s", true},
         R"({"kind":"deleteKeychainItem","service":"s","isSystemKeychain":true})"},
        {action::Guidance{{{"go"}, SettingsPane::loginItemsAndExtensions}},
         R"({"kind":"guidance","step":{"instruction":"go","settingsPane":"loginItemsAndExtensions"}})"},
        {action::Guidance{{{"go"}, std::nullopt}}, R"({"kind":"guidance","step":{"instruction":"go"}})"},
    };
    for (const auto& c : cases) {
        ScanResult result;
        result.traces = {traceOf(c.action, {MatchReason::Kind::nameToken, "App"})};
        const auto trace = parsed(json::document(std::vector{result}, Texts()))[0]["traces"][0];
        EXPECT_EQ(trace["action"], Json::parse(c.expected));
        EXPECT_EQ(trace["reason"], Json::parse(R"({"kind":"nameToken","value":"App"})"));
    }
}

TEST(JsonOutput, AScanHasTheFieldsOfItsRecord) {
    ScanResult result;
    result.target = {.bundleURL = Path("/Applications/A.app"),
                     .bundleID = "com.example.app",
                     .name = "A",
                     .version = "1",
                     .embeddedLaunchdItems = {{"l", Path("/p.plist"), true, std::nullopt}}};
    auto trace = traceOf(action::MovePath{Path("/a")});
    trace.sizeBytes = 7;
    trace.contestedBy = Claimant{"com.example.b", "B", Path("/Applications/B.app")};
    trace.isOnlyListed = trace.mayHoldOthers = true;
    result.traces = {trace};
    result.unreadableLocations = {Path("/Library/Caches")};
    result.skippedNames = {Path("/Library/\xff")};
    result.leftOut = 3;
    result.unusableHelpers = {"com.example.plugin"};
    result.owners.unreadable = {Path("/Users/bob/Applications")};
    result.immovable = {ImmovableApplication::Reason::protectedPlace, Path("/Users/alice/Downloads/A.app")};
    result.permissions = {.grants = {{"kTCCServiceCamera", {PermissionGrant::State::Kind::unknown, 4}}},
                          .unreadable = {PermissionGrant::Scope::system}};
    EXPECT_EQ(parsed(json::document(std::vector{result}, Texts())), Json::parse(R"([{
        "target": {"bundleURL": "/Applications/A.app", "bundleID": "com.example.app", "name": "A", "version": "1",
                   "appGroups": [], "loginItemBundleIDs": [],
                   "embeddedLaunchdItems": [{"label": "l", "plist": "/p.plist", "isSystemDomain": true}]},
        "traces": [{"id": ")" + trace.id.string() + R"(", "category": "launchItems",
                    "action": {"kind": "movePath", "url": "/a"}, "reason": {"kind": "declaredTarget"},
                    "reversibility": "reversible", "displayName": "x", "sizeBytes": 7, "requiresRoot": false,
                    "risk": "safe", "contestedBy": "com.example.b", "contestedByPlace": "/Applications/B.app",
                    "isOnlyListed": true, "isSelectedByDefault": false, "mayHoldOthers": true}],
        "unreadableLocations": ["/Library/Caches"], "skippedNames": ["/Library/\ufffd"], "leftOut": 3,
        "unknownOwners": {"unreadable": ["/Users/bob/Applications"], "uncounted": [], "damaged": [],
                          "absent": []},
        "immovable": {"reason": "protectedPlace", "place": "/Users/alice/Downloads/A.app"},
        "isProtected": false, "nameMatchingDisabled": false, "identifierMatchingDisabled": false,
        "unusableHelpers": ["com.example.plugin"],
        "permissions": {"grants": [{"service": "kTCCServiceCamera", "state": {"kind": "unknown", "value": 4},
                                    "scope": "user", "isPathClient": false}],
                        "unreadable": ["system"]}}])"));
    result.target.bundleURL = Path("/");
    EXPECT_FALSE(parsed(json::document(std::vector{result}, Texts()))[0]["target"].contains("bundleURL"))
        << "gone";
}

TEST(JsonOutput, AReportTellsWhyAStepFailedInWordsAndByKey) {
    RemovalReport report;
    report.apps = {{"A", "com.example.app"}};
    report.mode = RemovalMode::reset;
    report.quarantineRoot = Path("/q");
    report.manifestURL = Path("/q/m.json");
    RemovalOperation step;
    step.id = 1;
    step.kind = operation::Move{Path("/a"), Path("/q/0001/a")};
    step.displayName = "/a";
    report.operations = {step};
    report.results = {OperationResult::failure(1, {"failure.exit %@", {"3"}})};
    report.skippedNames = {Path("/Library/\xff")};
    report.unseen = {.unreadableLocations = {Path("/c")}, .leftOut = 2, .owners = {}};
    report.unseen.owners.damaged = {Path("/B.app")};
    report.emptiedFolders = {Path("/Applications/S")};
    report.deadLinks = {Path("/Applications/A.app")};
    report.verification =
        VerificationReport{{{"com.example.app", "A", {}, {PermissionGrant::Scope::system}}}};
    EXPECT_EQ(parsed(json::document(report, {.mode = RemovalMode::reset}, Texts())), Json::parse(R"({
        "apps": [{"name": "A", "bundleID": "com.example.app"}], "mode": "reset",
        "quarantineRoot": "/q", "manifestURL": "/q/m.json",
        "operations": [{"id": 1, "kind": {"kind": "move", "source": "/a", "destination": "/q/0001/a"},
                        "requiresRoot": false, "reversibility": "reversible", "displayName": "/a",
                        "traceID": ")" + step.traceID.string() + R"(", "bundleID": ""}],
        "results": [{"operationID": 1, "succeeded": false, "failureReason": "failure.exit 3",
                     "failureKey": "failure.exit %@"}],
        "skippedNames": ["/Library/\ufffd"], "unreadableLocations": ["/c"], "leftOut": 2,
        "unknownOwners": {"unreadable": [], "uncounted": [], "damaged": ["/B.app"], "absent": []},
        "emptiedFolders": ["/Applications/S"], "deadLinks": ["/Applications/A.app"],
        "verification": {"apps": [{"bundleID": "com.example.app", "name": "A", "tccSurvivors": [], "unreadable": ["system"]}]}})"));
}

TEST(JsonOutput, NamesThatAreNotTextNeverBreakADocument) {
    const std::string hostile = "a\xff\xc3\n\x1b[2J\"\\";
    ScanResult result;
    result.target.name = hostile;
    result.traces = {traceOf(action::MovePath{Path("/" + hostile)})};
    EXPECT_EQ(parsed(json::document(std::vector{result}, Texts()))[0]["target"]["name"],
              "a\ufffd\ufffd\n\x1b[2J\"\\");

    RemovalHistoryEntry entry;
    entry.manifest.apps = {{hostile, ""}};
    EXPECT_EQ(parsed(json::document(std::vector{entry}, true, {}, Texts()))[0]["manifest"]["apps"].size(),
              1U);
}

} // namespace
} // namespace tidwen
