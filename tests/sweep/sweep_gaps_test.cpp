// What could not be seen may have an owner and is not claimed.

#include "base/path.h"
#include "platform/budgeted_files.h"
#include "platform/file_code_signatures.h"
#include "platform/read_budget.h"
#include "scan/applications/installed_bundles.h"
#include "sweep/orphan_scan_fixture.h"
#include "sweep/orphan_scanner.h"
#include "sweep/sweep_gaps.h"

#include "support/stand_ins.h"
#include "support/unprivileged.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

TEST_F(OrphanScan, ClaimsNothingWhenNotAllApplicationsCouldBeRead) {
    volume.write(home + "Preferences/com.gone.ferry.plist", "x");
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    const BudgetedFiles files(volume.files(), ReadBudget({.bytes = 10}));
    InstalledBundles some(files, signatures, test::alice());
    OrphanScanner limited({files, receipts, running, log}, test::alice(), [](const auto&) { return false; });
    const auto result = limited.scan(some, {});
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_GT(result.leftOut, 0u);
}

TEST_F(OrphanScan, ClaimsNothingWhereAJobThatWorksMayNotHaveBeenCounted) {
    volume.write("/opt/tool", "x");
    volume.write(home + "Caches/com.gone.ferry/data", "x");
    volume.write(home + "Caches/com.living.tool/data", "x");
    for (int i = 0; i < 5'000; ++i)
        volume.write(home + "LaunchAgents/" + std::to_string(i) + ".plist", job("com.dead.job", "/opt/none"));
    volume.write(home + "LaunchAgents/last.plist", job("com.living.tool", "/opt/tool"));
    const auto result = scan();
    EXPECT_THAT(result.groups, testing::IsEmpty());
    EXPECT_THAT(result.gaps,
                ElementsAre(SweepGap{Path(home + "LaunchAgents"), SweepGap::Reason::unreadable}));
}

TEST_F(OrphanScan, LeavesAContainerThatHidesItsOwner) {
    const auto record = home + "Containers/com.gone.ferry/.com.apple.containermanagerd.metadata.plist";
    volume.write(record, "?");
    const auto result = scan();
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_THAT(result.unreadableLocations, ElementsAre(Path(record).parent()));
}

TEST_F(OrphanScan, ClaimsNothingThatAnUnseenApplicationMayOwn) {
    using Reason = SweepGap::Reason;
    const std::string damaged = "/Applications/Damaged.app";
    test::writeBundle(volume, "/Users/bob/Applications/Bobs.app", "com.bobs.app", "Bobs");
    volume.makeFolder("/Users/bob/Library/LaunchAgents");
    test::writeBundle(volume, damaged, "com.damaged.app", "Damaged");
    volume.makeFolder("/private/var/db/receipts");
    receipts.packages["com.closed.pkg"] = {"opt/gone"};
    const Path list("/private/var/db/receipts/com.closed.pkg.bom");
    test::giveToUnprivileged(volume.hostRoot());
    const auto forbid = [&](const std::string& path) {
        std::filesystem::permissions(volume.host(path), std::filesystem::perms::none);
    };
    const struct {
        const char* what;
        std::function<void()> change;
        SweepGap gap;
        std::vector<std::string> claimed;
    } cases[] = {
        {"other user's Library",
         [&] { forbid("/Users/bob/Library"); },
         {Path("/Users/bob/Library"), Reason::unreadable, true},
         {"com.gone.own"}},
        {"other user's applications",
         [&] { forbid("/Users/bob/Applications"); },
         {Path("/Users/bob/Applications"), Reason::unreadable, true},
         {"com.gone.own"}},
        {"damaged application",
         [&] { volume.write(damaged + "/Contents/Info.plist", "?"); },
         {Path(damaged), Reason::damaged, false},
         {}},
        {"a maker's folder",
         [&] {
             std::filesystem::remove_all(volume.host(damaged));
             volume.makeFolder("/Applications/Maker");
             forbid("/Applications/Maker");
         },
         {Path("/Applications/Maker"), Reason::unreadable, false},
         {}},
        {"an application on a disk that is away",
         [&] { volume.link("/Applications/Away.app", "/Volumes/Drive/Away.app"); },
         {Path("/Applications/Away.app"), Reason::away, false},
         {}},
        {"a suite on a disk that is away",
         [&] { volume.link("/Applications/Suite", "/Volumes/Drive/Suite"); },
         {Path("/Applications/Suite"), Reason::away, false},
         {}},
        {"a helper of an application",
         [&] {
             test::writeBundle(volume, "/Applications/Fine.app/Contents/PlugIns/W.appex", "io.widget.w", "W");
             test::writeBundle(volume, "/Applications/Fine.app", "com.fine.app", "Fine");
             forbid("/Applications/Fine.app/Contents/PlugIns");
         },
         {Path("/Applications/Fine.app"), Reason::unreadable, false},
         {}},
        {"a job",
         [&] {
             volume.write(home + "LaunchAgents/closed.plist", job("com.closed.job", "/bin/sh"));
             forbid(home + "LaunchAgents/closed.plist");
         },
         {Path(home + "LaunchAgents/closed.plist"), Reason::unreadableJob, false},
         {}},
        {"a package's list",
         [&] {
             receipts.unreadable = list;
             volume.write(list.string(), "x");
         },
         {list, Reason::unreadable, false},
         {}},
        {"the folder of receipts",
         [&] {
             receipts = {};
             forbid("/private/var/db/receipts");
         },
         {Path("/private/var/db/receipts"), Reason::unreadable, false},
         {}},
        {"a damaged job",
         [&] { volume.write(home + "LaunchAgents/damaged.plist", "?"); },
         {Path(home + "LaunchAgents/damaged.plist"), Reason::unreadableJob, false},
         {}},
        {"no applications",
         [&] {
             std::filesystem::permissions(volume.host("/Applications/Maker"), std::filesystem::perms::all);
             std::filesystem::rename(volume.host("/Applications"), volume.host("/Away"));
         },
         {Path("/Applications"), Reason::absent, false},
         {}},
    };
    test::asUnprivileged([&] {
        volume.write(home + "Preferences/com.gone.own.plist", "x");
        volume.write("/Library/Preferences/com.gone.shared.plist", "x");
        volume.write("/Users/Shared/com.gone.common/x", "x");
        EXPECT_THAT(orphans(),
                    testing::UnorderedElementsAre("com.gone.own", "com.gone.shared", "com.gone.common"));
        for (const auto& [what, change, gap, claimed] : cases) {
            SCOPED_TRACE(what);
            change();
            const auto result = scan();
            EXPECT_THAT(result.gaps, testing::Contains(gap));
            EXPECT_THAT(eachOf(result.gaps, &SweepGap::place),
                        testing::Not(testing::Contains(Path("/Users/bob/Library/LaunchAgents"))));
            EXPECT_EQ(eachOf(result.groups, &OrphanGroup::bundleID), claimed);
        }
    });
}

} // namespace
} // namespace tidwen
