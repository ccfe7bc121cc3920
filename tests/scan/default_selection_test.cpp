#include "base/path.h"
#include "base/property_list.h"
#include "platform/file_system.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/policy/removability.h"
#include "scan/policy/root_needed.h"
#include "scan/policy/trace_category.h"
#include "support/memory_defaults.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <tuple>
#include <vector>

namespace tidwen {
namespace {

using Kind = MatchReason::Kind;

TEST(Trace, RiskFollowsCategoryThenRootThenReason) {
    using enum TraceCategory;
    const std::tuple<TraceCategory, Kind, bool, TraceRisk> cases[] = {
        {application, Kind::declaredTarget, false, TraceRisk::safe},
        {caches, Kind::exactBundleID, false, TraceRisk::safe},
        {caches, Kind::exactBundleID, true, TraceRisk::sensitive},
        {supportFiles, Kind::nameToken, false, TraceRisk::review},
        {supportFiles, Kind::nameToken, true, TraceRisk::sensitive},
        {logs, Kind::executableName, false, TraceRisk::review},
        {containers, Kind::appGroup, false, TraceRisk::safe},
        {containers, Kind::sharedAppGroup, false, TraceRisk::review},
        {receipts, Kind::receipt, false, TraceRisk::safe},
        {privilegedTools, Kind::exactBundleID, false, TraceRisk::sensitive},
        {keychain, Kind::exactBundleID, false, TraceRisk::sensitive},
        {systemExtensions, Kind::exactBundleID, false, TraceRisk::sensitive},
        {permissions, Kind::declaredTarget, false, TraceRisk::review},
    };
    for (const auto& [category, reason, requiresRoot, expected] : cases)
        EXPECT_EQ(traceRisk(category, reason, requiresRoot), expected) << name(category);
}

TEST(DefaultSelection, TakesWhatIsSafeToTake) {
    using enum TraceCategory;
    using enum Reversibility;
    const struct {
        const char* what;
        TraceCategory category;
        Reversibility reversibility;
        bool isTaken;
        Kind reason = Kind::exactBundleID;
        bool requiresRoot = false, isContested = false, isOnlyListed = false, mayHoldOthers = false;
    } cases[] = {
        {"the application, also as root", application, reversible, true, Kind::declaredTarget, true},
        {"safe", caches, reversible, true},
        {"review", caches, reversible, true, Kind::nameToken},
        {"permissions", permissions, irreversibleHarmless, true, Kind::declaredTarget},
        {"contested", caches, reversible, false, Kind::exactBundleID, false, true},
        {"only listed", receipts, reversible, false, Kind::receipt, false, false, true},
        {"not searched", caches, reversible, false, Kind::nameToken, false, false, false, true},
        {"sensitive", caches, reversible, false, Kind::exactBundleID, true},
        {"passwords", keychain, irreversibleDestructive, false},
        {"only by hand", supportFiles, manualOnly, false},
        {"lost for good", supportFiles, irreversibleDestructive, false},
    };
    for (const auto& c : cases) {
        auto trace = makeTrace(c.category, action::MovePath{Path("/x")}, {c.reason, ""}, c.reversibility, "",
                               std::nullopt, c.requiresRoot);
        if (c.isContested)
            trace.contestedBy = Claimant{"com.other.app", "Other", Path("/Applications/Other.app")};
        trace.isOnlyListed = c.isOnlyListed;
        trace.mayHoldOthers = c.mayHoldOthers;
        EXPECT_EQ(takenByDefault(trace), c.isTaken) << c.what;
        ScanResult result;
        EXPECT_EQ(takenByDefault(trace, result), c.isTaken) << c.what;
        result.immovable = ImmovableApplication{};
        EXPECT_FALSE(takenByDefault(trace, result)) << c.what;
    }
}

TEST(MoveNeedsRoot, JudgesByModesAndOwners) {
    constexpr std::uint32_t root = 0, alice = 501, bob = 502, wheel = 0, staff = 20, admin = 80;
    const struct {
        const char* what;
        std::uint32_t parentMode, parentOwner, parentGroup, owner, userID;
        bool isFolder, isImmutable, needsRoot;
    } cases[] = {
        {"her bundle in /Applications", 0775, root, admin, alice, alice, true, false, false},
        {"an installer's bundle there", 0775, root, admin, root, alice, true, false, true},
        {"a file of the system's there", 0775, root, admin, root, alice, false, false, false},
        {"her own Applications folder", 0700, alice, staff, alice, alice, true, false, false},
        {"her folder without the right to write", 0500, alice, staff, alice, alice, true, false, true},
        {"the staff may read only", 0755, bob, staff, alice, alice, true, false, true},
        {"the system's folder", 0755, root, wheel, alice, alice, false, false, true},
        {"anybody may write", 0777, root, wheel, alice, alice, true, false, false},
        {"sticky, her item", 01777, root, wheel, alice, alice, true, false, false},
        {"sticky, another's item", 01777, root, wheel, bob, alice, false, false, true},
        {"sticky, but her folder", 01777, alice, staff, bob, alice, false, false, false},
        {"immutable", 0775, root, admin, alice, alice, true, true, true},
        {"root himself", 0755, alice, wheel, alice, root, true, false, false},
        {"root himself, immutable", 0755, root, wheel, root, root, true, true, true},
    };
    for (const auto& c : cases) {
        FileInfo item, parent;
        item.kind = c.isFolder ? FileKind::directory : FileKind::regular;
        item.ownerID = c.owner;
        item.immutable = c.isImmutable;
        parent.permissions = c.parentMode;
        parent.ownerID = c.parentOwner;
        parent.groupID = c.parentGroup;
        EXPECT_EQ(moveNeedsRoot(item, parent, c.userID), c.needsRoot) << c.what;
    }
}

constexpr const char* key = "tidwen.protectedBundleIDs";

TEST(ProtectedApps, TogglesAndStoresSorted) {
    test::MemoryDefaults defaults;
    ProtectedApps apps(defaults);
    std::string changes;
    const auto watching = apps.changed.connect([&](const auto& bundleIDs) {
        for (const auto& bundleID : bundleIDs)
            changes += bundleID;
    });
    for (const char* identifier : {"b", "a", "x", "C", "X"})
        apps.toggle(identifier);
    EXPECT_EQ(changes, "baxCx") << "each with what was added or taken off";
    EXPECT_EQ(defaults.value(key), (PropertyListArray{"C", "a", "b"}));
    defaults.isReadOnly = true;
    EXPECT_FALSE(apps.toggle("b"));
    EXPECT_TRUE(apps.contains("b"));
    EXPECT_EQ(ProtectedApps(defaults).bundleIDs(), apps.bundleIDs());
    defaults.values = {{key, PropertyListArray{"a", 1}}};
    EXPECT_TRUE(ProtectedApps(defaults).bundleIDs().empty());
}

TEST(ProtectedApps, AreReadAsAValueThatPassesOverLetterCase) {
    test::MemoryDefaults defaults;
    defaults.values = {{key, PropertyListArray{"a", "c"}}};
    const auto protection = readProtection(defaults);
    EXPECT_TRUE(protection.contains("A") && protection.contains("c") && !protection.contains("b"));
    EXPECT_EQ(protection.problem, std::nullopt);
}

} // namespace
} // namespace tidwen
