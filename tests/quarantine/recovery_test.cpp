#include "base/json.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "operations/recording_runner.h"
#include "quarantine/entries.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery.h"
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
#include <fmt/core.h>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

TEST_F(Recovery, KeepsWhatReallyLiesInQuarantine) {
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

TEST_F(Recovery, KeepsTheJournalWhileAnItemIsUnaccountedFor) {
    // In the middle of a move between disks: the original is set aside, the copy does not have its name yet.
    const std::string caches = "/Users/alice/Library/Caches/";
    const struct {
        const char* what;
        std::function<void()> prevent, allow;
    } cases[] = {
        {"may not write where it came from", [&] { mode(caches, 0555); }, [&] { mode(caches, 0755); }},
        {"may not look where it went", [&] { mode((root / "0001").string(), 0); },
         [&] { mode((root / "0001").string(), 0700); }},
        {"the disk it came from is away",
         [&] { rename(volume.host(caches), volume.host("/away")), volume.makeFolder(caches); },
         [&] { fs::remove(volume.host(caches)), rename(volume.host("/away"), volume.host(caches)); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const RemovalJournal journal{
            .createdAt = runDate,
            .quarantineRoot = root,
            .planned = {moveEntry(1, root, caches + "a"), moveEntry(2, root, "/Library/Caches/b")}};
        ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
        volume.write(caches + ".tidwen-moved-a", "whole");
        volume.write((root / "0001/.tidwen-copy-a").string(), "who");
        volume.write((root / "0002/b").string(), "b");
        giveToUnprivileged(volume.hostRoot());
        asUnprivileged([&] {
            c.prevent();
            for (int start = 0; start < 2; ++start) {
                const auto outcome = recoverAll();
                EXPECT_THAT(outcome.recovered, IsEmpty());
                ASSERT_EQ(outcome.unfinished.size(), 1u);
                EXPECT_EQ(outcome.unfinished[0].problem, UnfinishedRun::Problem::unsettled);
                EXPECT_THAT(outcome.unfinished[0].unsettled, ElementsAre(caches + "a"));
                EXPECT_THAT(outcome.unfinished[0].known->entries, ElementsAre(journal.planned[1]));
            }
            c.allow();
            const auto outcome = recoverAll();
            EXPECT_THAT(outcome.unfinished, IsEmpty());
            ASSERT_EQ(outcome.recovered.size(), 1u);
            EXPECT_EQ(volume.read(caches + "a"), "whole");
        });
        fs::remove_all(volume.host(root.string()));
    }
}

TEST_F(Recovery, LeavesEverythingElseAlone) {
    const auto write = [&](const Path& run, const Path& named, std::size_t bytes = std::string::npos) {
        const auto text = encode(RemovalJournal{.createdAt = runDate, .quarantineRoot = named});
        volume.write((run / journalFileName).string(), text.substr(0, bytes));
    };
    const Path finished = folder("Finished"), elsewhere = folder("Elsewhere"), cut = folder("Cut"),
               linked = folder("Linked"), other = alice().trash() / "Other", outside("/Library/Outside");
    write(elsewhere, finished);
    write(cut, cut, 60);
    volume.link((linked / journalFileName).string(), "../Tidwen - Elsewhere/tidwen-journal.json");
    write(other, other);
    write(outside, folder("Outside"));
    volume.link(folder("Outside").string(), "/Library/Outside");
    volume.write((folder("Mine") / "letter.txt").string(), "of the user");

    EXPECT_THAT(recover(), IsEmpty());
    for (const auto& run : {elsewhere, cut, linked, other, outside, folder("Mine")})
        EXPECT_FALSE(volume.exists((run / manifestFileName).string())) << run.string();
    for (const auto& run : {elsewhere, cut, linked}) {
        EXPECT_TRUE(volume.exists((run / journalFileName).string())) << run.string();
        EXPECT_TRUE(log.contains("Unreadable removal journal at " + run.string()));
    }
    EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(Recovery, MakesADamagedManifestAnewFromTheJournal) {
    const std::string cache = "/Users/alice/Library/Caches/a";
    const std::function<void(const std::string&)> damages[] = {
        [&](const auto& manifest) { volume.write(manifest, ""); },
        [&](const auto& manifest) { volume.write(manifest, "{\"apps\" : ["); },
        [&](const auto& manifest) { volume.link(manifest, "/Library/elsewhere.json"); },
    };
    for (const auto& damage : damages) {
        const RemovalJournal journal{
            .createdAt = runDate, .quarantineRoot = root, .planned = {moveEntry(1, root, cache)}};
        ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
        volume.write(*journal.planned[0].destination, "whole");
        damage((root / manifestFileName).string());
        ASSERT_EQ(recover().size(), 1u);
        EXPECT_EQ(readManifest(root, volume.files())->entries, journal.planned);
        EXPECT_FALSE(volume.exists((root / journalFileName).string()));
        EXPECT_FALSE(volume.exists("/Library/elsewhere.json"));
        fs::remove_all(volume.host(root.string()));
    }
}

TEST_F(Recovery, DropsTheJournalOfARunThatEndedOnceItIsSettled) {
    const auto known = moveEntry(1, root, "/Library/Caches/known"),
               late = moveEntry(2, root, "/Library/Caches/late");
    const Manifest manifest{.createdAt = runDate, .quarantineRoot = root, .entries = {known}};
    const RemovalJournal journal{.createdAt = runDate, .quarantineRoot = root, .planned = {known, late}};
    volume.write(*known.destination, "");
    volume.write(late.source, "");
    const auto recoverBeside = [&] {
        EXPECT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
        EXPECT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
        volume.write((root / reserveFileName).string(), "space");
        EXPECT_THAT(recover(), IsEmpty()) << "it had ended";
        return readManifest(root, volume.files())->entries;
    };
    EXPECT_THAT(recoverBeside(), ElementsAre(known));
    for (const auto* name : {journalFileName, reserveFileName})
        EXPECT_FALSE(volume.exists((root / name).string())) << name;
    fs::remove(volume.host(late.source));
    volume.write(*late.destination, "");
    EXPECT_THAT(recoverBeside(), ElementsAre(known, late)) << "a move that was made after the run had ended";
    fs::remove(volume.host(*late.destination));
    auto nowhere = late;
    nowhere.isMissing = true;
    EXPECT_THAT(recoverBeside(), ElementsAre(known, nowhere));
    volume.write((root / "0002/.tidwen-copy-late").string(), "");
    recoverBeside();
    EXPECT_TRUE(volume.exists((root / journalFileName).string())) << "it alone knows of the copy";
}

TEST_F(Recovery, TakesAwayFoldersInWhichNothingEverLay) {
    const std::string date = " - 2026-11-14 17-26-00";
    const Path empty = folder("Empty" + date), begun = folder("Begun" + date + " (12)"),
               numbered = folder("Numbered" + date), mine = folder("mine - 14");
    volume.makeFolder(empty.string());
    volume.makeFolder(mine.string());
    volume.write((begun / ".tidwen-new-tidwen-journal.json").string(), "{");
    volume.write((begun / reserveFileName).string(), "space");
    volume.write((numbered / "0001/Notes.app").string(), "an item");
    volume.write((numbered / ".tidwen-new-tidwen-journal.json").string(), "{");
    EXPECT_THAT(recover(), IsEmpty());
    EXPECT_FALSE(volume.exists(empty.string()));
    EXPECT_FALSE(volume.exists(begun.string()));
    EXPECT_TRUE(volume.exists((numbered / "0001/Notes.app").string()));
    EXPECT_TRUE(volume.exists(mine.string())) << "the user's own";
}

TEST_F(Recovery, FindsItemsWhoseNamesAnotherDiskSpelled) {
    const std::string composed = "Caf\u00e9", decomposed = "Cafe\u0301";
    const struct {
        const char* what;
        std::vector<std::string> lying; ///< present in the item's numbered folder
        std::string found;              ///< empty: the journal stays
    } cases[] = {
        {"decomposed", {decomposed}, decomposed},
        {"letter case", {"CAF\u00c9"}, "CAF\u00c9"},
        {"the exact name wins", {composed, decomposed}, composed},
        {"several could be it", {decomposed, "CAF\u00c9"}, ""},
        {"something else lies there", {"Tea"}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const RemovalJournal journal{.createdAt = runDate,
                                     .quarantineRoot = root,
                                     .planned = {moveEntry(1, root, "/Applications/" + composed)}};
        ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
        for (const auto& name : c.lying)
            volume.write((root / "0001" / name).string(), "");
        const auto outcome = recoverAll();
        if (c.found.empty()) {
            ASSERT_EQ(outcome.unfinished.size(), 1u);
            EXPECT_THAT(outcome.unfinished[0].unsettled, ElementsAre("/Applications/" + composed));
            EXPECT_TRUE(volume.exists((root / journalFileName).string()));
        } else {
            ASSERT_EQ(outcome.recovered.size(), 1u);
            EXPECT_EQ(outcome.recovered[0].entries.at(0).destination, (root / "0001" / c.found).string());
            EXPECT_EQ(readHistoryEntry(root, volume.files())->pendingMoves, 1);
        }
        fs::remove_all(volume.host(root.string()));
    }
}

TEST_F(Recovery, NamesItemsThatAreNowhere) {
    const std::string maker = "/Library/Application Support/Maker", taken = "/Library/Caches/taken";
    const RemovalJournal journal{.createdAt = runDate,
                                 .quarantineRoot = root,
                                 .planned = {moveEntry(1, root, taken), moveEntry(2, root, maker + "/in it"),
                                             moveEntry(3, root, maker), moveEntry(4, root, "/Library/held")}};
    ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
    const auto later = folder("Taken by the next run");
    ASSERT_TRUE(writeManifest({.createdAt = runDate + std::chrono::seconds(5),
                               .quarantineRoot = later,
                               .entries = {moveEntry(1, later, "/Library/held")}},
                              later / manifestFileName, volume.files()));
    volume.write((later / "0001/held").string(), "whole");
    volume.write((root / "0004/.tidwen-copy-held").string(), "who");
    volume.write((root / "0003/Maker/in it").string(), "went along");
    const auto outcome = recoverAll();
    ASSERT_EQ(outcome.recovered.size(), 1u);
    EXPECT_THAT(outcome.missing, ElementsAre(taken));

    const auto text = volume.read((root / manifestFileName).string());
    auto older = parseJson(text).value();
    EXPECT_EQ(older["missing"].size(), 1u);
    older.erase("missing");
    EXPECT_THAT(decodeManifest(older.dump())->entries, ElementsAre(journal.planned[2]))
        << "what was observed";

    const auto entry = [&] { return readHistoryEntry(root, volume.files()).value(); };
    EXPECT_EQ(entry().manifest, outcome.recovered[0]);
    EXPECT_EQ(std::tuple(entry().totalMoves, entry().pendingMoves, entry().missingMoves),
              std::tuple(2, 1, 1));
    volume.write(taken, "made anew");
    EXPECT_EQ(entry().missingMoves, 0);
    fs::remove(volume.host(taken));
    volume.write(*journal.planned[0].destination, "");
    EXPECT_EQ(entry().pendingMoves, 2) << "somebody brought it back into quarantine";
}

TEST_F(Recovery, NamesACopyThatStaysEachTimeAndRemovesThatOfADatabase) {
    const auto copy = root / "0001/.tidwen-copy-a", ofSeveral = root / "Kip/0002/.tidwen-copy-b";
    const std::string database = "/Library/Application Support/com.apple.TCC/.tidwen-new-TCC.db";
    ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root}, root / manifestFileName,
                              volume.files()));
    volume.write(copy.string(), "whole");
    volume.write(ofSeveral.string(), "half");
    volume.write(database, "rows");
    for (int start = 0; start < 2; ++start)
        EXPECT_THAT(recoverAll().strayCopies, ElementsAre(copy, ofSeveral));
    EXPECT_FALSE(volume.exists(database));
}

TEST_F(Recovery, LeavesTheFoldersBeforeWhichItIsToldToStop) {
    for (const auto* name : {"A", "B"}) {
        const RemovalJournal journal{.createdAt = runDate, .quarantineRoot = folder(name)};
        ASSERT_TRUE(writeJournal(journal, folder(name) / journalFileName, volume.files()));
    }
    StopSource stop;
    const auto outcome =
        recoverInterruptedRemovals(alice(), volume.files(), FixedClock(), log,
                                   {stop.token(), [&](const StepProgress&) { stop.requestStop(); }});
    EXPECT_EQ(outcome.recovered.size(), 1u);
    EXPECT_THAT(outcome.notBegun, ElementsAre(folder("B")));
    EXPECT_EQ(recover().size(), 1u);
}

} // namespace
} // namespace tidwen::test
