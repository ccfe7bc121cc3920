#include "scan/default_selection.h"
#include "scan/root_needed.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

using Kind = MatchReason::Kind;

TEST(DefaultSelection, TakesWhatIsSafeToTake) {
    const struct {
        const char* what;
        TraceCategory category;
        Kind reason;
        Reversibility reversibility;
        bool requiresRoot, isContested, isTaken;
    } cases[] = {
        {"the application, also as root", TraceCategory::application, Kind::declaredTarget,
         Reversibility::reversible, true, false, true},
        {"safe", TraceCategory::caches, Kind::exactBundleID, Reversibility::reversible, false, false, true},
        {"review", TraceCategory::caches, Kind::nameToken, Reversibility::reversible, false, false, true},
        {"permissions", TraceCategory::permissions, Kind::declaredTarget, Reversibility::irreversibleHarmless,
         false, false, true},
        {"contested", TraceCategory::caches, Kind::exactBundleID, Reversibility::reversible, false, true,
         false},
        {"sensitive", TraceCategory::caches, Kind::exactBundleID, Reversibility::reversible, true, false,
         false},
        {"passwords", TraceCategory::keychain, Kind::exactBundleID, Reversibility::irreversibleDestructive,
         false, false, false},
        {"only by hand", TraceCategory::supportFiles, Kind::exactBundleID, Reversibility::manualOnly, false,
         false, false},
        {"lost for good", TraceCategory::supportFiles, Kind::exactBundleID,
         Reversibility::irreversibleDestructive, false, false, false},
    };
    for (const auto& c : cases) {
        auto trace = makeTrace(c.category, action::MovePath{Path("/x")}, {c.reason, ""}, c.reversibility, "",
                               std::nullopt, c.requiresRoot);
        if (c.isContested) trace.contestedBy = "com.other.app";
        EXPECT_EQ(takenByDefault(trace), c.isTaken) << c.what;
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

} // namespace
} // namespace tidwen
