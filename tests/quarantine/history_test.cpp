#include "base/path.h"
#include "base/timestamp.h"
#include "operations/recording_runner.h"
#include "quarantine/entries.h"
#include "quarantine/history.h"
#include "quarantine/history_grouping.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery_fixture.h"
#include "quarantine/run_items.h"
#include "quarantine/unfinished_run.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/small_disk.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"
#include "support/watched_files.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace tidwen::test {
namespace {

TEST_F(Recovery, HistoryAlsoTellsOfRunsThatAreNoEntries) {
    const RemovalJournal journal{
        .createdAt = runDate, .quarantineRoot = root, .apps = {{"Notes", "n"}}, .planned = {}};
    ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
    volume.write((folder("Damaged") / manifestFileName).string(), "{");
    volume.write((folder("Cut") / journalFileName).string(), "{");
    volume.makeFolder(folder("Nothing").string());
    // Under names other than recorded.
    ASSERT_TRUE(writeManifest({.quarantineRoot = folder("Away")}, folder("Moved") / manifestFileName,
                              volume.files()));
    fs::copy(volume.host(root.string()), volume.host(folder("Notes copy").string()));
    const auto runs = loadPastRuns(alice(), volume.files(), false).unfinished;
    EXPECT_THAT(eachOf(runs, [](const auto& run) { return run.root.lastComponent(); }),
                ElementsAre("Tidwen - Cut", "Tidwen - Damaged", "Tidwen - Moved", "Tidwen - Notes",
                            "Tidwen - Notes copy"));
    EXPECT_THAT(eachOf(runs, [](const auto& run) { return run.advice().key; }),
                ElementsAre("history.unfinished.unreadableJournal", "history.unfinished.unreadableManifest",
                            "history.unfinished.renamed %@", "history.unfinished.interrupted",
                            "history.unfinished.copied %@"));
    EXPECT_EQ(runs[2].recordOf, folder("Away"));
    EXPECT_EQ(runs[3].known->apps.front().name, "Notes");
}

TEST_F(Recovery, HistoryCountsWhatIsLeft) {
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
    EXPECT_EQ(history[0].missingMoves, 2);
    using Items = RemovalHistoryEntry::Items;
    const auto items = [&] { return readHistoryEntry(root, volume.files())->items(); };
    EXPECT_EQ(items(), Items::inQuarantine);
    fs::remove_all(volume.host((root / "0002").string()));
    EXPECT_EQ(items(), Items::missing) << "nobody put them back";
    const auto later = folder("Notes again");
    ASSERT_TRUE(writeManifest({.createdAt = runDate + std::chrono::hours(1),
                               .quarantineRoot = later,
                               .entries = {moveEntry(1, later, "/Library/Caches/b")}},
                              later / manifestFileName, volume.files()));
    volume.write((later / "0001/b").string(), "put back, and taken again");
    const auto both = loadHistory(alice(), volume.files(), false);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[0].missingMoves, 0);
    EXPECT_EQ(both[1].missingMoves, 2) << "a and d";
    const auto places =
        eachOf(runItems(both[1].manifest, volume.files(), both[1].takenAgain), &RunItem::place);
    EXPECT_THAT(places, ElementsAre(ItemPlace::missing, ItemPlace::putBack, ItemPlace::missing));
    ASSERT_TRUE(volume.files().removeFile(later / manifestFileName));
    ASSERT_TRUE(writeJournal({.createdAt = runDate + std::chrono::hours(1),
                              .quarantineRoot = later,
                              .planned = {moveEntry(1, later, "/Library/Caches/b")}},
                             later / journalFileName, volume.files()));
    EXPECT_EQ(loadHistory(alice(), volume.files(), false).at(0).missingMoves, 2) << "a journal holds b too";
    for (const auto* name : {"a", "b", "d"})
        volume.write(std::string("/Library/Caches/") + name, "");
    EXPECT_EQ(items(), Items::putBack);
}

TEST(HistoryGroup, IsByTheDaysOfTheCalendar) {
    const auto at = [](const char* moment) { return *parseIso8601(std::string("2026-") + moment + ":00Z"); };
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1); // NOLINT(concurrency-mt-unsafe)
    const auto group = [&](const char* run, const char* now) {
        return groupOf({.root = {}, .manifest = {.createdAt = at(run), .quarantineRoot = {}}}, at(now));
    };
    EXPECT_EQ(group("11-14T23:10", "11-15T10:00"), HistoryGroup::today) << "after midnight there";
    EXPECT_EQ(group("11-14T22:50", "11-15T10:00"), HistoryGroup::yesterday);
    EXPECT_EQ(group("03-28T08:00", "03-29T22:30"), HistoryGroup::month) << "two days, though 39 hours";
    EXPECT_EQ(group("11-16T12:00", "11-15T10:00"), HistoryGroup::month) << "a wrong clock";
    setenv("TZ", "UTC", 1); // NOLINT(concurrency-mt-unsafe)
}

} // namespace
} // namespace tidwen::test
