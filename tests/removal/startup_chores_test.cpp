#include "base/path.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/trash_lock.h"
#include "removal/flow_fixture.h"
#include "removal/startup_chores.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

#include <chrono>
#include <filesystem>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

TEST(StartupChores, StartsWithRecoveryAndPurgesWhatIsPastItsTime) {
    FlowFixture fixture;
    fixture.preferences.quarantineRetention.set("thirtyDays");
    std::vector<Path> roots;
    for (const auto& [name, age] : {std::pair("Alpine", 40), std::pair("Birch", -40), std::pair("Cedar", 1),
                                    std::pair("Dogwood", 50)}) {
        fixture.clock.time -= std::chrono::days(age);
        fixture.remove({name});
        fixture.clock.time += std::chrono::days(age);
        roots.push_back(std::get<stage::Report>(fixture.model->stage()).report.quarantineRoot);
        fixture.model->close();
    }
    for (const auto& root : {roots[2], roots[3]}) {
        const auto cut = readManifest(root, fixture.volume.files()).value();
        ASSERT_TRUE(writeJournal({.createdAt = cut.createdAt,
                                  .quarantineRoot = cut.quarantineRoot,
                                  .apps = cut.apps,
                                  .planned = cut.entries},
                                 root / journalFileName, fixture.volume.files()));
        ASSERT_TRUE(fixture.volume.files().removeFile(root / manifestFileName));
    }

    fixture.chores.run();
    fixture.settle();
    EXPECT_FALSE(fixture.has(roots[0]));
    EXPECT_TRUE(fixture.has(roots[1])) << "its date lies in the future";
    EXPECT_THAT(eachOf(fixture.chores.recoveryNotices(),
                       [](const auto& notice) { return notice.manifest.apps.front().name; }),
                ElementsAre("Cedar", "Dogwood"));
    EXPECT_TRUE(fixture.has(roots[3])) << "what this start recovered is not purged by its age at once";
    ASSERT_TRUE(fixture.chores.purged()) << "nothing is deleted permanently without a word";
    EXPECT_EQ(*fixture.chores.purged(), (Message{"home.purged %lld %lld", {"1", "30"}}));
    fixture.chores.dismissPurged();
    EXPECT_FALSE(fixture.chores.purged());
    fixture.chores.run();
    EXPECT_EQ(fixture.background.drain(), 0u) << "once per launch";
    fixture.chores.undoRecovered();
    fixture.settle();
    EXPECT_TRUE(fixture.has(fixture.bundle("Cedar")));
    EXPECT_TRUE(fixture.chores.undoReport()->failures.empty());
    EXPECT_EQ(fixture.chores.undoneApps().front().name, "Cedar");
    EXPECT_EQ(fixture.chores.recoveryNotice()->manifest.apps.front().name, "Dogwood");

    const auto undo = [&] {
        fixture.chores.undoRecovered();
        fixture.settle();
        return fixture.chores.recoveryNotice().has_value();
    };
    {
        const auto other = lockTrash(fixture.user, fixture.volume.files());
        EXPECT_TRUE(undo()) << "refused";
        EXPECT_EQ(fixture.chores.errorMessage(), "failure.trashBusy");
    }
    std::filesystem::remove_all(fixture.volume.host("/Users/alice/Library/Caches"));
    fixture.volume.write("/Users/alice/Library/Caches", "no folder to put anything into");
    EXPECT_TRUE(undo()) << "in part";
    EXPECT_FALSE(fixture.chores.undoReport()->failures.empty());
    EXPECT_FALSE(fixture.chores.errorMessage());
    EXPECT_TRUE(fixture.has(fixture.bundle("Dogwood")));
    fixture.chores.dismissRecoveryNotice();
    fixture.chores.forgetUndo();
    EXPECT_FALSE(fixture.chores.recoveryNotice());
    EXPECT_FALSE(fixture.chores.undoReport());
}

} // namespace
} // namespace tidwen::test
