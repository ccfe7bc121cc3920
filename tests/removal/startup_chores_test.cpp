#include "removal/flow_fixture.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

namespace tidwen::test {
namespace {

TEST(StartupChores, StartsWithRecoveryAndPurgesWhatIsPastItsTime) {
    FlowFixture bench;
    bench.preferences.quarantineRetention.set("thirtyDays");
    std::vector<Path> roots;
    for (const auto& [name, age] : {std::pair("Alpine", 40), std::pair("Birch", -40), std::pair("Cedar", 1),
                                    std::pair("Dogwood", 50)}) {
        bench.clock.time -= std::chrono::days(age);
        bench.remove({name});
        bench.clock.time += std::chrono::days(age);
        roots.push_back(std::get<stage::Report>(bench.model->stage()).report.quarantineRoot);
        bench.model->close();
    }
    for (const auto& root : {roots[2], roots[3]}) {
        const auto cut = readManifest(root, bench.volume.files()).value();
        ASSERT_TRUE(writeJournal({.createdAt = cut.createdAt,
                                  .quarantineRoot = cut.quarantineRoot,
                                  .apps = cut.apps,
                                  .planned = cut.entries},
                                 root / journalFileName, bench.volume.files()));
        ASSERT_TRUE(bench.volume.files().removeFile(root / manifestFileName));
    }

    bench.chores.run();
    bench.settle();
    EXPECT_FALSE(bench.has(roots[0]));
    EXPECT_TRUE(bench.has(roots[1])) << "its date lies in the future";
    EXPECT_THAT(eachOf(bench.chores.recoveryNotices(),
                       [](const auto& notice) { return notice.manifest.apps.front().name; }),
                ElementsAre("Cedar", "Dogwood"));
    EXPECT_TRUE(bench.has(roots[3])) << "what this start recovered is not purged by its age at once";
    bench.chores.run();
    EXPECT_EQ(bench.background.drain(), 0u) << "once per launch";
    bench.chores.undoRecovered();
    bench.settle();
    EXPECT_TRUE(bench.has(bench.bundle("Cedar")));
    EXPECT_EQ(bench.chores.recoveryNotice()->manifest.apps.front().name, "Dogwood");
    bench.chores.dismissRecoveryNotice();
    EXPECT_FALSE(bench.chores.recoveryNotice());
}

} // namespace
} // namespace tidwen::test
