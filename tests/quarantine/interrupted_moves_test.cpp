#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "operations/recording_runner.h"
#include "posix/comparison_limit.h"
#include "quarantine/entries.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/recovery.h"
#include "quarantine/recovery_fixture.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
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
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

TEST_F(Recovery, SettlesWhatAnUndoBetweenDisksLeftBesideTheOldPlace) {
    const std::string place = "/Library/Caches/a.db", copy = "/Library/Caches/.tidwen-copy-a.db",
                      beside = "/Library/Caches/.tidwen-copy-a 7.db";
    const auto entry = moveEntry(1, root, place);
    const std::string item = *entry.destination, aside = (root / "0001/.tidwen-moved-a.db").string();
    using Files = std::map<std::string, std::string>;
    const struct {
        const char* what;
        Files given, then;
        bool isStray = false;
    } cases[] = {
        {"half a copy", {{item, "whole"}, {copy, "who"}}, {{item, "whole"}}},
        {"for a name beside", {{item, "whole"}, {beside, "who"}}, {{item, "whole"}}},
        {"its place was taken since",
         {{item, "whole"}, {copy, "who"}, {place, "new"}},
         {{item, "whole"}, {place, "new"}}},
        {"whole, the original aside", {{aside, "whole"}, {copy, "whole"}}, {{place, "whole"}}},
        {"half, the original aside", {{aside, "whole"}, {copy, "who"}}, {{item, "whole"}}},
        {"arrived, the original aside", {{aside, "whole"}, {place, "whole"}}, {{place, "whole"}}},
        {"the original was taken", {{copy, "who"}}, {{copy, "who"}}, true},
        {"more than the original", {{item, "w"}, {copy, "who"}}, {{item, "w"}, {copy, "who"}}, true},
        {"of another item", {{item, "whole"}, {copy, "wha"}}, {{item, "whole"}, {copy, "wha"}}, true},
    };
    const auto present = [&] {
        Files found;
        for (const auto& path : {place, copy, beside, item, aside})
            if (volume.exists(path)) found[path] = volume.read(path);
        return found;
    };
    QuarantinePurge purge(volume.files(), alice(), {}, log);
    for (const auto& c : cases)
        for (const bool hasEnded : {true, false}) {
            SCOPED_TRACE(c.what);
            for (const auto& [path, content] : c.given) {
                volume.write(path, content);
                fs::last_write_time(volume.host(path), fs::file_time_type());
            }
            const Manifest manifest{.createdAt = runDate, .quarantineRoot = root, .entries = {entry}};
            const RemovalJournal journal{.createdAt = runDate, .quarantineRoot = root, .planned = {entry}};
            if (hasEnded) {
                ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
                if (c.given.contains(copy) || c.given.contains(beside)) {
                    const auto refused = purge.purge({root});
                    ASSERT_FALSE(refused);
                    EXPECT_EQ(refused.error().kind, QuarantinePurge::Failure::Kind::undoCutOff);
                    const auto other = folder("Settled");
                    ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = other},
                                              other / manifestFileName, volume.files()));
                    const auto kept = purge.purge({root, other}, {}, QuarantinePurge::CutOffUndo::keep);
                    EXPECT_EQ(kept->removedFolders, 1) << "one stuck undo does not hold up the others";
                    EXPECT_EQ(kept->kept, std::vector{root});
                    EXPECT_TRUE(kept->cutOffUndos.contains(root));
                }
            } else {
                ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
            }
            const auto outcome = recoverAll();
            EXPECT_EQ(present(), c.then);
            EXPECT_EQ(outcome.settledReturns.size(), c.isStray ? 0u : 1u);
            EXPECT_EQ(outcome.strayCopies, c.isStray ? std::vector{Path(copy)} : std::vector<Path>());
            EXPECT_EQ(purge.purge({root}).has_value(), !c.isStray);
            for (const auto& path : {root.string(), place, copy})
                fs::remove_all(volume.host(path));
        }
}

TEST_F(Recovery, ComparesWhatIsLeftOfAnItemWithinALimit) {
    class Settling : public WatchedFiles {
      public:
        using WatchedFiles::WatchedFiles;
        MoveResult settleInterruptedMove(const Path& from, const Path& to) override {
            ++attempts;
            if (stop) stop->requestStop();
            return WatchedFiles::settleInterruptedMove(from, to);
        }
        int attempts = 0;
        StopSource* stop = nullptr;
    };
    const std::string caches = "/Users/alice/Library/Caches/",
                      rest = (root / "0001/.tidwen-arrived-X").string();
    const struct {
        const char* what;
        const char* has; ///< the items beside the old place
        int links;       ///< of a file without content in the rest
        bool stops;
        int attempts;
    } cases[] = {
        {"what it cannot be the rest of", "other", 0, false, 0},
        {"too many holes", "a", 5, false, 0},
        {"what it may be the rest of", "a", 0, false, 50},
        {"stopped after the first", "a", 0, true, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        volume.write(rest + "/a", "rest");
        for (int number = 1; number <= c.links; ++number) {
            const auto file = fmt::format("{}/{}", rest, number);
            if (number == 1) volume.write(file, "");
            if (number == 1) fs::resize_file(volume.host(file), std::uint64_t{1000} << 20);
            if (number > 1) fs::create_hard_link(volume.host(rest + "/1"), volume.host(file));
            for (int item = 2; item <= 50; ++item)
                volume.write(fmt::format("{}X {}/{}", caches, item, number), "");
        }
        volume.write(caches + "X/" + c.has, "item");
        for (int number = 2; number <= 50; ++number)
            volume.write(fmt::format("{}X {}/{}", caches, number, c.has), "item");
        ASSERT_TRUE(writeManifest(
            {.createdAt = runDate, .quarantineRoot = root, .entries = {moveEntry(1, root, caches + "X")}},
            root / manifestFileName, volume.files()));
        Settling files(volume.files());
        StopSource source;
        files.stop = c.stops ? &source : nullptr;
        const auto outcome = recoverInterruptedRemovals(alice(), files, clock, log, {.stop = source.token()});
        EXPECT_EQ(files.attempts, c.attempts);
        // What was not compared to its end is looked at by the next one.
        EXPECT_EQ(outcome.strayCopies, c.stops ? std::vector<Path>() : std::vector{Path(rest)});
        for (const auto& path : {root.string(), caches})
            fs::remove_all(volume.host(path));
    }
}

TEST_F(Recovery, ComparesCopiesWithinALimit) {
    for (const char* place : {"/whole", "/copy", "/small", "/small copy"}) {
        volume.write(place, "x");
        if (!std::string_view(place).starts_with("/small"))
            fs::resize_file(volume.host(place), std::uint64_t{1} << 40);
    }
    const auto canHaveGrown = [&](const char* whole, const char* copy) {
        return canHaveGrownFrom(Path(whole), Path(copy), volume.files());
    };
    StopSource source;
    const ComparisonLimit limit(source.token());
    EXPECT_FALSE(canHaveGrown("/whole", "/copy")) << "would read its holes for half an hour";
    WatchedFiles watched(volume.files());
    std::vector<std::size_t> calls;
    for (int time = 0; time < 2; ++time) {
        watched.before(1'000, [] {});
        EXPECT_TRUE(canHaveGrownFrom(Path("/small"), Path("/small copy"), watched));
        calls.push_back(watched.calls());
    }
    EXPECT_LT(calls[1], calls[0]) << "reads a pair once";
    volume.write("/small copy", "y");
    fs::last_write_time(volume.host("/small copy"), fs::file_time_type());
    EXPECT_FALSE(canHaveGrown("/small", "/small copy"));
    volume.write("/equal", "x");
    source.requestStop();
    EXPECT_FALSE(canHaveGrown("/small", "/equal"));
}

TEST_F(Recovery, AFolderThatCannotBeReadMayHoldACopyOfAnUndo) {
    const std::string caches = "/Users/alice/Library/Caches/";
    for (const bool needsRoot : {false, true}) {
        const auto entry = moveEntry(1, root, caches + "a", needsRoot);
        volume.write(*entry.destination, "whole");
        volume.write(caches + ".tidwen-copy-a", "who");
        ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                  root / manifestFileName, volume.files()));
        giveToUnprivileged(volume.hostRoot());
        asUnprivileged([&] {
            QuarantinePurge purge(volume.files(), alice(), {}, log);
            mode(caches, 0);
            const auto unlisted = needsRoot ? std::vector<Path>() : std::vector{Path(caches).standardized()};
            EXPECT_EQ(recoverAll().unlisted, unlisted);
            if (needsRoot) return mode(caches, 0755); // an administrator's move leaves no copy
            EXPECT_EQ(purge.purge({root}).error().kind, QuarantinePurge::Failure::Kind::undoUnknown);
            EXPECT_EQ(purge.purge({root}, {}, QuarantinePurge::CutOffUndo::keep)->kept, std::vector{root});
            mode(caches, 0755);
            EXPECT_EQ(recoverAll().settledReturns.size(), 1u);
        });
    }
}

/// The run never moved the item, nor what came after it: nothing is set aside.
TEST_F(Recovery, AHalfCopyIsNoItemButMayBeAllThatIsLeftOfOne) {
    const std::string caches = "/Library/Caches", aside = caches + "/.tidwen-moved-a";
    const auto copied = moveEntry(1, root, caches + "/a"), never = moveEntry(2, root, caches + "/b");
    const auto copy = (root / "0001/.tidwen-copy-a").string();
    const auto other = folder("Earlier");
    const auto taken = moveEntry(1, other, copied.source);
    const auto skipped = withSmallDisk(1u << 20, [&](const fs::path& disk) {
        TemporaryVolume mac; // sees the disk
        mac.makeFolder(caches);
        ASSERT_TRUE(mountAgain(disk, mac.host(caches)));
        ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {copied, never}},
                                 root / journalFileName, mac.files()));
        mac.write(copy, "who");
        mac.write(aside, "");
        EXPECT_THAT(readUnfinishedRun(root, mac.files())->unsettled, ElementsAre(copied.source));
        fs::remove(mac.host(aside));
        // Another run has the item, changed since; the clock was set back.
        const auto recoverAgain = [&](bool isElsewhere) {
            ASSERT_TRUE(
                writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {copied, never}},
                             root / journalFileName, mac.files()));
            const auto outcome = recoverInterruptedRemovals(alice(), mac.files(), clock, log);
            ASSERT_EQ(outcome.recovered.size(), 1u);
            EXPECT_EQ(outcome.missing, isElsewhere ? std::vector<std::string>() : std::vector{copied.source});
            EXPECT_EQ(outcome.recovered[0].entries.size(), outcome.missing.size());
            EXPECT_THAT(outcome.strayCopies, ElementsAre(Path(copy)));
            EXPECT_EQ(mac.read(copy), "who");
        };
        recoverAgain(false);
        QuarantinePurge purge(mac.files(), alice(), {}, log);
        EXPECT_EQ(purge.purge({root}).error().describe(), (Message{"failure.restOfRemoval %@", {copy}}));
        ASSERT_TRUE(writeManifest(
            {.createdAt = runDate - std::chrono::hours(1), .quarantineRoot = other, .entries = {taken}},
            other / manifestFileName, mac.files()));
        mac.write(*taken.destination, "another");
        fs::remove(mac.host((root / manifestFileName).string()));
        recoverAgain(true);
        EXPECT_TRUE(purge.purge({root}));
    });
    if (skipped) GTEST_SKIP() << *skipped;
}

TEST_F(Recovery, WhatLiesAsideBelongsToTheRunThatHasTheItem) {
    // Both runs planned to move the item; the later one was interrupted when it had copied it.
    const std::string place = "/Library/Caches/a", aside = "/Library/Caches/.tidwen-moved-a";
    const auto later = folder("Notes 2"); // sorted, and so looked at, after the other
    UndoService::Ports ports{volume.files(), administrator, session, log, clock};
    for (const bool isLaterWhole : {true, false})
        for (const bool isUndone : {true, false})
            for (const bool hasEnded : {true, false}) {
                SCOPED_TRACE(isLaterWhole);
                const auto first = moveEntry(1, root, "/Library/Caches/b"),
                           second = moveEntry(2, root, place);
                const auto held = moveEntry(1, later, place);
                ASSERT_TRUE(
                    writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {first, second}},
                                 root / journalFileName, volume.files()));
                const auto begun = runDate + std::chrono::seconds(5);
                if (hasEnded && isLaterWhole)
                    ASSERT_TRUE(
                        writeManifest({.createdAt = begun, .quarantineRoot = later, .entries = {held}},
                                      later / manifestFileName, volume.files()));
                else
                    ASSERT_TRUE(writeJournal({.createdAt = begun, .quarantineRoot = later, .planned = {held}},
                                             later / journalFileName, volume.files()));
                volume.write(*first.destination, "b");
                volume.write(aside, "whole");
                const auto copy = isLaterWhole ? *held.destination : (later / "0001/.tidwen-copy-a").string();
                volume.write(copy, "whole");
                for (const auto& path : {aside, copy})
                    fs::last_write_time(volume.host(path), fs::file_time_type());
                if (isUndone) {
                    const auto report = UndoService(ports, alice()).undoRun(root);
                    ASSERT_TRUE(report);
                    EXPECT_EQ(std::tuple(report->restoredCount, report->totalCount), std::tuple(1, 1));
                } else {
                    const auto outcome = recoverAll();
                    EXPECT_THAT(outcome.unfinished, IsEmpty());
                    EXPECT_THAT(outcome.missing, IsEmpty());
                }
                EXPECT_FALSE(volume.exists(place));
                EXPECT_FALSE(volume.exists(aside));
                EXPECT_EQ(volume.read(*held.destination), "whole");
                for (const auto& path : {root.string(), later.string(), std::string("/Library/Caches")})
                    fs::remove_all(volume.host(path));
            }
}

TEST_F(Recovery, WhatLiesAsideGetsItsNameOnlyIfNoRunHasItWhole) {
    // Two removals of one place, both interrupted. Each letter is a file of the item.
    const std::string place = "/Applications/X.app", aside = "/Applications/.tidwen-moved-X.app";
    const auto other = folder("Notes 2");
    const auto mine = moveEntry(1, root, place), its = moveEntry(1, other, place);
    const std::string whole = *mine.destination, copy = (root / "0001/.tidwen-copy-X.app").string();
    const struct {
        const char* what;
        int begunLater; ///< seconds after the other
        std::string has, letters, others, left;
        bool isNamed = false;
    } cases[] = {
        {"another version was removed since", -5, whole, "ab", "xy", "b"},
        {"half a copy, of the same second", 0, copy, "a", "ab", "b"},
        {"half a copy, the clock was set back since", 86'400, copy, "a", "ab", "b"},
        {"another version, the clock was set back since", 86'400, whole, "xy", "ab", "b"},
        {"written meanwhile", -5, whole, "ab", "xy", "bn", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto begun = runDate + std::chrono::seconds(c.begunLater);
        ASSERT_TRUE(writeJournal({.createdAt = begun, .quarantineRoot = root, .planned = {mine}},
                                 root / journalFileName, volume.files()));
        ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = other, .planned = {its}},
                                 other / journalFileName, volume.files()));
        for (const auto& [item, letters] :
             {std::pair(aside, c.left), {c.has, c.letters}, {*its.destination, c.others}})
            for (const char letter : letters) {
                const auto file = item + "/" + letter;
                volume.write(file, std::string(3, letter));
                fs::last_write_time(volume.host(file), fs::file_time_type());
            }
        fs::last_write_time(volume.host(c.has), fs::file_time_type()); // not that of what is aside
        const auto outcome = recoverAll();
        EXPECT_EQ(outcome.recovered.size(), 2u);
        EXPECT_THAT(outcome.missing, IsEmpty());
        EXPECT_EQ(volume.exists(place + "/b"), c.isNamed);
        for (const auto& path : {aside, copy})
            EXPECT_FALSE(volume.exists(path)) << path;
        for (const auto& path : {root.string(), other.string(), std::string("/Applications")})
            fs::remove_all(volume.host(path));
    }
}

TEST_F(Recovery, AnItemSetAsideIsNoRestOfARunThatHasMore) {
    // An older version was installed again, and its removal cut off. Each letter is a file of the item.
    const std::string place = "/Applications/X.app", aside = "/Applications/.tidwen-moved-X.app";
    const auto later = folder("Notes 2");
    const auto old = moveEntry(1, root, place), mine = moveEntry(1, later, place);
    const std::string copy = (later / "0001/.tidwen-copy-X.app").string();
    const struct {
        const char* what;
        std::string older, copied, then; ///< then: where "ab" is in the end
    } cases[] = {
        {"its own copy is whole", "abc", "ab", *mine.destination},
        {"so is what an older run has", "ab", "ab", *mine.destination},
        {"its copy was taken", "abc", "", place},
    };
    for (const auto& c : cases)
        for (const bool isUndone : {false, !c.copied.empty()}) {
            SCOPED_TRACE(c.what);
            ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {old}},
                                      root / manifestFileName, volume.files()));
            ASSERT_TRUE(writeJournal(
                {.createdAt = runDate + std::chrono::seconds(5), .quarantineRoot = later, .planned = {mine}},
                later / journalFileName, volume.files()));
            for (const auto& [item, letters] :
                 {std::pair(*old.destination, c.older), {aside, "ab"}, {copy, c.copied}}) {
                for (const char letter : letters) {
                    const auto file = item + "/" + letter;
                    volume.write(file, std::string(3, letter));
                    fs::last_write_time(volume.host(file), fs::file_time_type());
                }
                if (!letters.empty()) fs::last_write_time(volume.host(item), fs::file_time_type());
            }
            if (isUndone) {
                UndoService::Ports ports{volume.files(), administrator, session, log, clock};
                EXPECT_EQ(UndoService(ports, alice()).undoRun(later)->failures, std::vector<Problem>());
            } else {
                const auto outcome = recoverAll();
                EXPECT_EQ(outcome.recovered.size(), 1u);
                EXPECT_THAT(outcome.missing, IsEmpty());
            }
            const auto then = isUndone ? place : c.then;
            EXPECT_TRUE(volume.exists(then + "/b"));
            EXPECT_FALSE(volume.exists(then + "/c"));
            EXPECT_EQ(volume.exists(*old.destination + "/c"), c.older == "abc");
            for (const auto& path : {aside, copy})
                EXPECT_FALSE(volume.exists(path)) << path;
            for (const auto& path : {root.string(), later.string(), std::string("/Applications")})
                fs::remove_all(volume.host(path));
        }
}

TEST_F(Recovery, WhatAnotherHomeSetAsideStaysThoughThisOneHasItsLike) {
    // The item was installed again after the one of them moved it, and before the other.
    const std::string place = "/Applications/X.app", aside = "/Applications/.tidwen-moved-X.app";
    const auto mine = moveEntry(1, root, place);
    const auto added = [&](const std::string& path) {
        return volume.files().info(Path(path))->addedNanoseconds;
    };
    for (const bool isMineLater : {false, true}) {
        SCOPED_TRACE(isMineLater);
        ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {mine}},
                                 root / journalFileName, volume.files()));
        if (isMineLater) volume.makeFolder("/Users/bob");
        const auto& first = isMineLater ? aside : *mine.destination;
        const auto& second = isMineLater ? *mine.destination : aside;
        for (const auto& item : {first, second})
            volume.write(item + "/a", "a");
        do
            for (const auto& item : {first + "/a", second + "/a", second})
                fs::last_write_time(volume.host(item), fs::file_time_type());
        while (added(second) <= added(first));
        const auto outcome = recoverAll();
        ASSERT_EQ(outcome.unfinished.size(), 1u);
        EXPECT_EQ(outcome.unfinished[0].unsettled, std::vector{place});
        EXPECT_EQ(volume.read(aside + "/a"), "a");
        EXPECT_EQ(volume.read(*mine.destination + "/a"), "a");
        fs::remove_all(volume.host(root.string()));
        fs::remove_all(volume.host("/Applications"));
    }
}

/// Something was written to an original while it was being removed, or what was put back is gone since.
TEST_F(Recovery, WhatOnlyARestHasIsNamedUntilItIsGone) {
    const std::string place = "/Library/Support/X";
    const auto entry = moveEntry(1, root, place);
    UndoService::Ports ports{volume.files(), administrator, session, log, clock};
    QuarantinePurge purge(volume.files(), alice(), {}, log);
    for (const bool isUndone : {true, false})
        for (const bool wasPutBack : {true, false}) {
            const auto rest = wasPutBack ? (root / "0001/.tidwen-arrived-X").string()
                                         : std::string("/Library/Support/.tidwen-arrived-X");
            const Message reason{"failure.restOfRemoval %@", {rest}};
            ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                      root / manifestFileName, volume.files()));
            if (!wasPutBack) volume.write(*entry.destination + "/a", "a");
            volume.write(rest + "/new", "written since");
            for (const bool isAgain : {false, true}) {
                if (!isUndone) continue;
                const auto report = UndoService(ports, alice()).undoRun(root);
                ASSERT_TRUE(report) << isAgain;
                EXPECT_THAT(report->failures, Contains(Problem{place, reason}));
            }
            EXPECT_EQ(recoverAll().strayCopies, std::vector{Path(rest)});
            const auto refused = purge.purge({root});
            ASSERT_FALSE(refused);
            EXPECT_EQ(refused.error().describe(), reason);
            EXPECT_EQ(purge.purge({root}, {}, QuarantinePurge::CutOffUndo::keep)->kept, std::vector{root});
            EXPECT_EQ(volume.read(rest + "/new"), "written since");
            fs::remove_all(volume.host(rest));
            fs::remove_all(volume.host("/Library/Support"));
            EXPECT_TRUE(purge.purge({root}));
        }
}

TEST_F(Recovery, AnUndoCutOffAtANumberedNameIsNotDoneTwice) {
    const std::string place = "/Library/Support/X";
    const auto entry = moveEntry(1, root, place);
    ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                              root / manifestFileName, volume.files()));
    const auto aside = (root / "0001/.tidwen-moved-X").string();
    for (const auto& file : {aside, place + " 2"}) {
        volume.write(file, "whole");
        fs::last_write_time(volume.host(file), fs::file_time_type());
    }
    UndoService::Ports ports{volume.files(), administrator, session, log, clock};
    EXPECT_EQ(UndoService(ports, alice()).undoRun(root)->renamed, std::vector{Path(place + " 2")});
    EXPECT_FALSE(volume.exists(place) || volume.exists(aside));
}

/// The files of both are names of one file of holes, which would take hours to read for each name.
TEST_F(Recovery, ComparesWhatIsAsideWithinALimit) {
    const std::string caches = "/Library/Caches/", aside = caches + ".tidwen-moved-X",
                      copy = (root / "0001/.tidwen-copy-X").string();
    const auto entry = moveEntry(1, root, caches + "X");
    ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {entry}},
                             root / journalFileName, volume.files()));
    for (const auto& item : {aside, copy}) {
        volume.write(item + "/1", "");
        fs::resize_file(volume.host(item + "/1"), std::uint64_t{100} << 20);
        for (int name = 2; name <= 60; ++name)
            fs::create_hard_link(volume.host(item + "/1"), volume.host(fmt::format("{}/{}", item, name)));
        fs::last_write_time(volume.host(item + "/1"), fs::file_time_type());
        fs::last_write_time(volume.host(item), fs::file_time_type());
    }
    StopSource source;
    const StepControl stops{source.token(), [&](const StepProgress&) { source.requestStop(); }};
    EXPECT_EQ(recoverInterruptedRemovals(alice(), volume.files(), clock, log, stops).unfinished.size(), 1u);
    EXPECT_TRUE(volume.exists(aside) && volume.exists(copy)) << "stopped before it had compared them";
    EXPECT_EQ(recoverAll().recovered.size(), 1u);
    EXPECT_TRUE(volume.exists(*entry.destination) && !volume.exists(aside));
}

/// Both runs are forged: one claims to have the items, the other to have been cut off in moving them.
TEST_F(Recovery, NothingGetsANameWhereThePolicyForbidsAMove) {
    const auto other = folder("Other");
    for (const std::string place : {"/Users/bob/Documents/X", "/System/Library/CoreServices/X"}) {
        const auto held = moveEntry(1, other, place), planned = moveEntry(1, root, place);
        const auto aside = (Path(place).parent() / ".tidwen-moved-X").string();
        volume.write(*held.destination, "held");
        volume.write(aside, "another's");
        ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = other, .entries = {held}},
                                  other / manifestFileName, volume.files()));
        ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {planned}},
                                 root / journalFileName, volume.files()));
        recoverAll();
        EXPECT_TRUE(volume.exists(aside) && !volume.exists(place));
    }
}

TEST_F(Recovery, FindsWhatWasOnItsWayUnderNamesThatAnotherDiskSpelled) {
    const std::string composed = "Caf\u00e9", decomposed = "Cafe\u0301", caches = "/Library/Caches/";
    const auto entry = moveEntry(1, root, caches + composed);
    const auto inQuarantine = [&](const std::string& name) { return (root / "0001" / name).string(); };
    const struct {
        const char* what;
        bool hasEnded;
        std::string lying, with; ///< two paths, one content
        std::string then;        ///< all that is left
    } cases[] = {
        {"set aside by an undo", true, inQuarantine(".tidwen-moved-" + decomposed),
         caches + ".tidwen-copy-" + composed, caches + composed},
        {"copied by an undo", true, inQuarantine(composed), caches + ".tidwen-copy-" + decomposed,
         inQuarantine(composed)},
        {"copied by a removal", false, inQuarantine(".tidwen-copy-" + decomposed), caches + composed,
         caches + composed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.hasEnded)
            ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                      root / manifestFileName, volume.files()));
        else
            ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = {entry}},
                                     root / journalFileName, volume.files()));
        for (const auto& path : {c.lying, c.with}) {
            volume.write(path, "whole");
            fs::last_write_time(volume.host(path), fs::file_time_type());
        }
        EXPECT_THAT(recoverAll().unfinished, IsEmpty());
        for (const auto& path : {c.lying, c.with, c.then})
            EXPECT_EQ(volume.exists(path), path == c.then) << path;
        for (const auto& path : {root.string(), caches})
            fs::remove_all(volume.host(path));
    }
}

} // namespace
} // namespace tidwen::test
