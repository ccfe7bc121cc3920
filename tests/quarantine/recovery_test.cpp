#include "quarantine/entries.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"

namespace tidwen::test {
namespace {

class Recovery : public testing::Test {
  protected:
    static Path folder(const std::string& name) { return alice().trash() / ("Tidwen - " + name); }
    std::vector<Manifest> recover() {
        return recoverInterruptedRemovals(alice(), volume.files(), FixedClock(), log);
    }

    TemporaryVolume volume;
    RecordingLog log;
};

TEST_F(Recovery, KeepsWhatReallyLiesInQuarantine) {
    const auto root = folder("Notes");
    const std::string agents = "/Users/alice/Library/LaunchAgents/";
    const RemovalJournal journal{
        .createdAt = runDate,
        .quarantineRoot = root,
        .apps = {{"Notes", "com.example.notes"}},
        .planned = {bootoutEntry(1, "moved", false, agents + "moved.plist"),
                    bootoutEntry(2, "left", false, agents + "left.plist"),
                    bootoutEntry(3, "loose", false, {}), moveEntry(4, root, agents + "left.plist"),
                    moveEntry(5, root, agents + "moved.plist"), moveEntry(6, root, "/Library/Caches/again"),
                    moveEntry(7, root, "/Library/Caches/link")}};
    ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
    volume.write(agents + "left.plist", "left");
    volume.write(*journal.planned[4].destination, "moved");
    volume.write(*journal.planned[5].destination, "old");
    volume.write("/Library/Caches/again", "made anew since");
    volume.link(*journal.planned[6].destination, "nowhere");

    const auto& planned = journal.planned;
    const Manifest expected{.createdAt = runDate,
                            .quarantineRoot = root,
                            .apps = journal.apps,
                            .entries = {planned[0], planned[4], planned[5], planned[6]},
                            .recoveredAt = FixedClock().now()};
    EXPECT_THAT(recover(), ElementsAre(expected));
    EXPECT_EQ(readManifest(root, volume.files()), expected);
    EXPECT_FALSE(volume.exists((root / journalFileName).string()));
    EXPECT_TRUE(log.contains("Recovered interrupted removal: 4/7 planned entries observed in quarantine"));
    EXPECT_THAT(recover(), IsEmpty());
}

TEST_F(Recovery, LeavesEverythingElseAlone) {
    const auto write = [&](const Path& root, const Path& named, std::size_t bytes = std::string::npos) {
        const auto text = encode(RemovalJournal{.createdAt = runDate, .quarantineRoot = named});
        volume.write((root / journalFileName).string(), text.substr(0, bytes));
    };
    const Path finished = folder("Finished"), elsewhere = folder("Elsewhere"), cut = folder("Cut"),
               linked = folder("Linked"), other = alice().trash() / "Other", outside("/Library/Outside");
    write(finished, finished);
    volume.write((finished / manifestFileName).string(), "whatever");
    write(elsewhere, finished);
    write(cut, cut, 60);
    volume.link((linked / journalFileName).string(), (finished / journalFileName).string());
    write(other, other);
    write(outside, folder("Outside"));
    volume.link(folder("Outside").string(), "/Library/Outside");
    volume.makeFolder(folder("Empty").string());

    EXPECT_THAT(recover(), IsEmpty());
    EXPECT_EQ(volume.read((finished / manifestFileName).string()), "whatever");
    for (const auto& root : {elsewhere, cut, linked, other, outside, folder("Empty")})
        EXPECT_FALSE(volume.exists((root / manifestFileName).string())) << root.string();
    for (const auto& root : {elsewhere, cut, linked}) {
        EXPECT_TRUE(volume.exists((root / journalFileName).string())) << root.string();
        EXPECT_TRUE(log.contains("Unreadable removal journal at " + root.string()));
    }
    EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(Recovery, HistoryCountsWhatIsLeft) {
    const auto root = folder("Notes");
    auto unplaced = moveEntry(4, root, "/Library/Caches/d");
    unplaced.destination.reset();
    const Manifest manifest{.createdAt = runDate,
                            .quarantineRoot = root,
                            .entries = {moveEntry(1, root, "/Library/Caches/a"),
                                        moveEntry(2, root, "/Library/Caches/b"),
                                        bootoutEntry(3, "job", false, {}), unplaced}};
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    volume.write((root / "0002/b").string(), "b");
    const auto history = loadHistory(alice(), volume.files(), false);
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0].pendingMoves, 1);
    EXPECT_EQ(history[0].totalMoves, 3);
}

} // namespace
} // namespace tidwen::test
