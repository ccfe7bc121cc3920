#include "base/message.h"
#include "base/numbered_name.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/property_list.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "operations/recording_runner.h"
#include "operations/removal_operation.h"
#include "platform/launchd.h"
#include "quarantine/entries.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/not_undone.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery.h"
#include "quarantine/restore_target.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"
#include "volume/volume_runner.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

std::vector<std::string> lines(const std::vector<Problem>& failures) {
    return eachOf(failures,
                  [](const Problem& failure) { return failure.item + ": " + Texts().text(failure.reason); });
}

class Undo : public testing::Test {
  protected:
    Undo() {
        administrator.answer = [this](const RemovalOperation& each) {
            return VolumeRunner(volume.files(), alice(), log).run({each}).front().failureReason;
        };
        administrator.asksForPassword = true;
        manifest.quarantineRoot = root;
    }

    /// Adds a move, and the item in quarantine with its source path as content.
    void quarantined(int id, const std::string& source, bool requiresRoot = false) {
        manifest.entries.push_back(moveEntry(id, root, source, requiresRoot));
        volume.write(*manifest.entries.back().destination, source);
    }

    UndoReport undo(std::vector<ManifestEntry> added = {}) {
        manifest.entries.insert(manifest.entries.end(), added.begin(), added.end());
        return UndoService({volume.files(), administrator, session, log, clock}, alice()).undo(manifest);
    }

    Path root = alice().trash() / "Tidwen - Notes";
    TemporaryVolume volume;
    RecordingLog log;
    RecordingRunner administrator, session;
    Texts texts;
    FixedClock clock;
    Manifest manifest;
};

TEST_F(Undo, PutsEverythingBackWithOneBatch) {
    const std::string agents = "/Users/alice/Library/LaunchAgents/",
                      daemon = "/Library/LaunchDaemons/d.plist";
    quarantined(4, "/Users/alice/Library/Caches/it's \"é\"\n");
    quarantined(5, daemon, true);
    quarantined(6, agents + "agent.plist");
    quarantined(5, "/Library/Caches/same number", true);
    const auto report = undo({bootoutEntry(1, "agent", false, agents + "agent.plist"),
                              bootoutEntry(2, "daemon", true, daemon),
                              bootoutEntry(3, "embedded", true, {}),
                              bootoutEntry(7, "gone", false, agents + "gone.plist"),
                              {.operationID = 9, .source = "/Library/Caches/unplaced", .bundleID = ""}});

    EXPECT_EQ(report, (UndoReport{.restoredCount = 4, .totalCount = 4, .failures = {}, .relaunchedJobs = 2}));
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(volume.read(manifest.entries[i].source), manifest.entries[i].source);
    ASSERT_EQ(administrator.batches.size(), 1u);
    const auto& batch = administrator.batches[0];
    const auto is = [](const RemovalOperation::Kind& kind) { return Field(&RemovalOperation::kind, kind); };
    EXPECT_THAT(batch, ElementsAre(is(operation::Move{root / "0005/d.plist", Path(daemon)}),
                                   is(operation::Move{root / "0005/same number",
                                                      Path("/Library/Caches/same number")}),
                                   is(operation::Bootstrap{Path(daemon), true})));
    EXPECT_EQ(batch[0].id, 5);
    EXPECT_NE(batch[1].id, 5) << "results are told apart by number";
    EXPECT_EQ(batch[2].displayName, "daemon");
    ASSERT_EQ(session.batches.size(), 1u);
    EXPECT_THAT(session.batches[0],
                ElementsAre(is(operation::Bootstrap{Path(agents + "agent.plist"), false})));
    EXPECT_THAT(*volume.files().list(root), IsEmpty()) << "emptied folders stay behind";
}

TEST_F(Undo, WhatItLeavesWhenItIsToldToStopComesBackLater) {
    quarantined(1, "/Users/alice/Library/Caches/first");
    quarantined(2, "/Users/alice/Library/Caches/second");
    quarantined(3, "/Library/Caches/third", true);
    StopSource stop;
    auto service = UndoService({volume.files(), administrator, session, log, clock}, alice());
    const auto report = service.undo(manifest, {}, {stop.token(), [&](const StepProgress& step) {
                                                        EXPECT_EQ(step.total, 3u);
                                                        stop.requestStop();
                                                    }});
    EXPECT_EQ(report.restoredCount, 1);
    EXPECT_EQ(lines(report.failures),
              (std::vector<std::string>{"/Users/alice/Library/Caches/second: failure.stopped",
                                        "/Library/Caches/third: failure.stopped"}));
    EXPECT_THAT(administrator.batches, IsEmpty());
    EXPECT_EQ(service.undo(manifest).restoredCount, 2);
}

TEST_F(Undo, NoJobIsLeftToLoadWhereNoneRuns) {
    const std::string agent = "/Users/alice/Library/LaunchAgents/agent.plist";
    quarantined(1, agent);
    manifest.entries.push_back(bootoutEntry(2, "agent", false, agent));
    StopSource stop;
    UndoService service({volume.files(), administrator, session, log, clock, false}, alice());
    const auto report =
        service.undo(manifest, {}, {stop.token(), [&](const StepProgress&) { stop.requestStop(); }});
    EXPECT_EQ(report, (UndoReport{.restoredCount = 1, .totalCount = 1, .failures = {}, .relaunchedJobs = 1}));
    EXPECT_THAT(session.batches, IsEmpty());
}

TEST_F(Undo, CountsTheJobsThatStartAgain) {
    struct Switches : Launchd {
        std::map<std::string, bool> disabledOverrides(bool) const override {
            return {{"off", true}, {"on again", false}};
        }
        tl::expected<void, LaunchdError> setEnabled(bool, const std::string&, const Path&, bool) override {
            return {};
        }
    } launchd;
    const std::string agents = "/Users/alice/Library/LaunchAgents/";
    const std::string disabled = writeXmlPropertyList(PropertyListDictionary{{"Disabled", true}});
    int number = 0;
    std::vector<ManifestEntry> jobs;
    for (const std::string job : {"alone", "on", "off", "on again", "disabled", "displaced"}) {
        quarantined(++number, agents + job + ".plist");
        if (job == "on again" || job == "disabled")
            volume.write(*manifest.entries.back().destination, disabled);
        jobs.push_back(bootoutEntry(100 + number, job, false, agents + job + ".plist"));
    }
    manifest.entries.insert(manifest.entries.end(), jobs.begin(), jobs.end());
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    volume.write(agents + "displaced.plist", "another's");
    UndoService service({volume.files(), administrator, session, log, clock, false, &launchd}, alice());
    EXPECT_EQ(service.undoRun(root, {agents + "alone.plist"})->relaunchedJobs, 1);
    EXPECT_THAT(service.planRun(root)->jobs, ElementsAre("on", "on again"));
    EXPECT_EQ(service.undoRun(root)->relaunchedJobs, 2);
}

TEST_F(Undo, ReportsEveryStepThatFailsAndGoesOn) {
    quarantined(2, "/Library/Caches/refused", true);
    quarantined(3, "/Users/alice/Library/Caches/fine");
    volume.write("/Library/LaunchDaemons/d.plist", "");
    administrator.answer = [](const auto&) { return Message{"failure.adminCancelled"}; };
    const auto report = undo({moveEntry(4, root, "/Users/alice/Library/Caches/gone"),
                              bootoutEntry(5, "daemon", true, "/Library/LaunchDaemons/d.plist")});
    EXPECT_EQ(report.restoredCount, 1);
    EXPECT_EQ(report.totalCount, 3);
    EXPECT_THAT(lines(report.failures),
                ElementsAre("/Users/alice/Library/Caches/gone: failure.notInQuarantine",
                            "/Library/Caches/refused: failure.adminCancelled",
                            "/Library/LaunchDaemons/d.plist: failure.adminCancelled"));
    EXPECT_TRUE(volume.exists((root / "0002/refused").string()));
}

TEST_F(Undo, OfWhatIsBackAlreadyFailsNothing) {
    quarantined(1, "/Users/alice/Library/Caches/moved");
    const std::string agent = "/Users/alice/Library/LaunchAgents/agent.plist";
    quarantined(2, agent);
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    session.answer = [](const auto&) { return Message{"failure.launchctlExit %lld", {"5"}}; };
    const auto service = [&](bool runsJobs) {
        return UndoService({volume.files(), administrator, session, log, clock, runsJobs}, alice());
    };
    const auto run = [&](bool runsJobs) { return service(runsJobs).undoRun(root); };
    manifest.entries.push_back(bootoutEntry(3, "agent", false, agent));
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    for (const bool runsJobs : {true, false})
        EXPECT_THAT(service(runsJobs).planRun(root)->jobs, ElementsAre("agent"));
    EXPECT_THAT(lines(run(true)->failures), ElementsAre(agent + ": failure.launchctlExit 5"));

    session.answer = nullptr;
    manifest.apps = {{"Notes", "com.example.notes"}};
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    const auto again = run(true);
    ASSERT_TRUE(again) << "the job is left to load";
    EXPECT_EQ(
        *again,
        (UndoReport{.failures = {}, .relaunchedJobs = 1, .alreadyBack = 2, .lost = NotUndone::unknown}));
    EXPECT_EQ(run(false).error().key, "history.undo.nothingLeft %@");
    const std::pair<std::vector<std::string>, NotUndone> recorded[] = {
        {{}, NotUndone::nothing},
        {{"resetPermissions"}, NotUndone::permissions},
        {{"deleteKeychainItem", "resetPermissions"}, NotUndone::passwords},
    };
    for (const auto& [kinds, lost] : recorded) {
        manifest.irreversible = kinds;
        ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
        EXPECT_EQ(run(true)->lost, lost) << kinds.size();
    }
}

TEST_F(Undo, TakesTheJournalOfARunThatHasNoManifest) {
    quarantined(1, "/Users/alice/Library/Caches/moved");
    manifest.entries.push_back(moveEntry(2, root, "/Users/alice/Library/Caches/not yet"));
    volume.write("/Users/alice/Library/Caches/not yet", "");
    const RemovalJournal journal{.createdAt = runDate, .quarantineRoot = root, .planned = manifest.entries};
    ASSERT_TRUE(writeJournal(journal, root / journalFileName, volume.files()));
    UndoService service({volume.files(), administrator, session, log, clock}, alice());
    const auto report = service.undoRun(root);
    ASSERT_TRUE(report);
    EXPECT_EQ(*report, (UndoReport{.restoredCount = 1, .totalCount = 1, .failures = {}}));
    EXPECT_TRUE(volume.exists("/Users/alice/Library/Caches/moved"));
    EXPECT_FALSE(volume.exists((root / journalFileName).string())) << "nothing of it is interrupted now";
    EXPECT_EQ(readHistoryEntry(root, volume.files())->totalMoves, 1);
    EXPECT_EQ(service.undoRun(root).error().key, "history.undo.nothingLeft %@");

    // The same beside a damaged manifest; missing items are reported.
    manifest.entries.resize(1);
    quarantined(3, "/Users/alice/Library/Caches/again");
    manifest.entries.push_back(moveEntry(4, root, "/Users/alice/Library/Caches/gone"));
    ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = manifest.entries},
                             root / journalFileName, volume.files()));
    volume.write((root / manifestFileName).string(), "{");
    EXPECT_THAT(lines(service.undoRun(root)->failures),
                ElementsAre("/Users/alice/Library/Caches/gone: failure.notInQuarantine"));
    EXPECT_FALSE(volume.exists((root / journalFileName).string()));
    EXPECT_EQ(readHistoryEntry(root, volume.files())->items(), RemovalHistoryEntry::Items::missing);
    EXPECT_THAT(lines(service.undoRun(root)->failures),
                ElementsAre("/Users/alice/Library/Caches/gone: failure.notInQuarantine"))
        << "named each time";
    EXPECT_EQ(service.planRun(root)->items.size(), 1u);

    EXPECT_TRUE(volume.files().removeFile(root / manifestFileName));
    volume.write((root / journalFileName).string(), "{");
    EXPECT_EQ(service.undoRun(root).error().key, "history.undo.unreadable %@ %@");
}

TEST_F(Undo, AJobIsLoadedThoughItsFileWasLostForAWhile) {
    const std::string agent = "/Users/alice/Library/LaunchAgents/agent.plist",
                      daemon = "/Library/LaunchDaemons/daemon.plist";
    const std::vector planned = {bootoutEntry(1, "agent", false, agent),
                                 bootoutEntry(2, "daemon", true, daemon), moveEntry(3, root, agent),
                                 moveEntry(4, root, daemon, true)};
    UndoService service({volume.files(), administrator, session, log, clock}, alice());
    for (const bool recoversFirst : {true, false}) {
        ASSERT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = root, .planned = planned},
                                 root / journalFileName, volume.files()));
        if (recoversFirst)
            EXPECT_THAT(recoverInterruptedRemovals(alice(), volume.files(), clock, log).missing,
                        ElementsAre(agent, daemon));
        else
            EXPECT_THAT(
                lines(service.undoRun(root)->failures),
                ElementsAre(agent + ": failure.notInQuarantine", daemon + ": failure.notInQuarantine"));
        ASSERT_TRUE(readManifest(root, volume.files()));
        volume.write(*planned[2].destination, "");
        volume.write(*planned[3].destination, "");
        EXPECT_THAT(service.planRun(root)->jobs, ElementsAre("agent", "daemon"));
        EXPECT_EQ(*service.undoRun(root),
                  (UndoReport{.restoredCount = 2, .totalCount = 2, .failures = {}, .relaunchedJobs = 2}));
        for (const auto& path : {root.string(), agent, daemon})
            std::filesystem::remove_all(volume.host(path));
    }
}

TEST_F(Undo, FindsWhatAnotherDiskSpelledOtherwise) {
    manifest.entries = {moveEntry(1, root, "/Library/Caches/Caf\u00e9"),
                        moveEntry(2, root, "/Library/Caches/Kip")};
    volume.write((root / "0001/Cafe\u0301").string(), "one");
    for (const auto* name : {"0002/KIP", "0002/kip"})
        volume.write((root / name).string(), "which");
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    const auto report =
        UndoService({volume.files(), administrator, session, log, clock}, alice()).undoRun(root);
    ASSERT_TRUE(report);
    EXPECT_EQ(volume.read("/Library/Caches/Caf\u00e9"), "one");
    EXPECT_THAT(lines(report->failures), ElementsAre("/Library/Caches/Kip: failure.severalInQuarantine"));
    EXPECT_TRUE(volume.exists((root / "0002/KIP").string()) && volume.exists((root / "0002/kip").string()));
}

TEST_F(Undo, TakesAwayWhatAnEarlierOneLeftOfAnItemThatIsBack) {
    const std::string back = "/Users/alice/Library/Caches/back";
    const auto entry = moveEntry(1, root, back);
    const auto aside = Path(*entry.destination).parent() / ".tidwen-moved-back";
    volume.write(back, "whole");
    volume.write(aside.string(), "whole");
    std::filesystem::last_write_time(volume.host(aside.string()),
                                     std::filesystem::last_write_time(volume.host(back)));
    giveToUnprivileged(volume.hostRoot());
    asUnprivileged([&] {
        const auto numbered = volume.host(aside.parent().string());
        std::filesystem::permissions(numbered, std::filesystem::perms(0555));
        EXPECT_THAT(lines(undo({entry}).failures), ElementsAre(back + ": failure.remainsInQuarantine"));
        std::filesystem::permissions(numbered, std::filesystem::perms(0755));
        EXPECT_THAT(lines(undo().failures), IsEmpty());
        EXPECT_FALSE(volume.exists(aside.string()));
        EXPECT_EQ(volume.read(back), "whole");
        EXPECT_FALSE(volume.exists("/Users/alice/Library/Caches/back 2"));
    });
}

TEST_F(Undo, PutsNoRestOfAnEarlierOneBack) {
    // The item has arrived; the original was being removed when the undo was cut off.
    const std::string place = "/Applications/X.app", copy = "/Applications/.tidwen-copy-X.app",
                      beside = "/Applications/X 2.app";
    const auto entry = moveEntry(1, root, place);
    const auto other = alice().trash() / "Tidwen - Later";
    const auto again = moveEntry(1, other, place);
    const std::string aside = (root / "0001/.tidwen-moved-X.app").string();
    const std::string rest = (root / "0001/.tidwen-arrived-X.app").string();
    const struct {
        const char* what;
        std::string at, letters, left, then; ///< then: all that is left aside or beside
        bool isNoItem = false;
    } cases[] = {
        {"known to have arrived, changed since", place, "aBc", "bc", rest, true},
        {"known to have arrived, moved since", "/Applications/Y.app", "abc", "bc", rest, true},
        {"known to have arrived", place, "abc", "bc", "", true},
        {"known to have arrived, removed again", *again.destination, "abc", "bc", "", true},
        {"changed since", place, "aBc", "bc", aside},
        {"removed again", *again.destination, "abc", "bc", ""},
        {"whole, and its place was taken", place, "x", "xbc", beside},
        {"not arrived, and its place was taken", copy, "ab", "bc", place},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                  root / manifestFileName, volume.files()));
        ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = other, .entries = {again}},
                                  other / manifestFileName, volume.files()));
        for (const auto& [item, letters] : {std::pair(c.at, c.letters), {c.isNoItem ? rest : aside, c.left}})
            for (const char letter : letters) {
                const auto file = item + "/" + static_cast<char>(letter | 0x20);
                volume.write(file, std::string(3, letter));
                std::filesystem::last_write_time(volume.host(file), std::filesystem::file_time_type());
            }
        UndoService service({volume.files(), administrator, session, log, clock}, alice());
        if (c.isNoItem) {
            EXPECT_EQ(readHistoryEntry(root, volume.files())->pendingMoves, 0);
            EXPECT_FALSE(service.planRun(root) && !service.planRun(root)->items.empty());
        }
        const auto report = service.undoRun(root);
        EXPECT_EQ(report.has_value(), c.then == rest || (!c.isNoItem && c.at != *again.destination));
        EXPECT_TRUE(c.then.empty() || volume.exists(c.then + "/c"));
        for (const auto& path : {aside, rest, beside})
            EXPECT_EQ(volume.exists(path), path == c.then) << path;
        const auto failures = report ? report->failures : std::vector<Problem>();
        const char* key = c.at == place ? "failure.undo.rest %@" : "failure.restOfRemoval %@";
        if (c.then == aside || c.then == rest)
            EXPECT_THAT(failures, Contains(Problem{place, {key, {c.then}}}));
        else
            EXPECT_EQ(failures, std::vector<Problem>());
        EXPECT_EQ(recoverInterruptedRemovals(alice(), volume.files(), clock, log).strayCopies,
                  c.then == aside || c.then == rest ? std::vector{Path(c.then)} : std::vector<Path>());
        for (const auto& path : {root.string(), other.string(), std::string("/Applications")})
            std::filesystem::remove_all(volume.host(path));
    }
}

TEST_F(Undo, AnItemOnItsWayToAnotherNameHasNotArrivedAtItsOwn) {
    // The place was taken by an application with more in it. Each letter is a file of the item.
    const std::string place = "/Applications/X.app", beside = "/Applications/X 2.app",
                      copy = "/Applications/.tidwen-copy-X 2.app";
    const auto entry = moveEntry(1, root, place);
    const std::string aside = (root / "0001/.tidwen-moved-X.app").string();
    const struct {
        std::string copied, then; ///< then: where "ab" is in the end
    } cases[] = {{"ab", beside}, {"a", beside}, {"", aside}};
    for (const auto& c : cases)
        for (const bool isRecovered : {true, false}) {
            SCOPED_TRACE(c.copied);
            ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                      root / manifestFileName, volume.files()));
            for (const auto& [item, letters] :
                 {std::pair<std::string, std::string>(place, "abc"), {aside, "ab"}, {copy, c.copied}}) {
                const std::filesystem::file_time_type then;
                for (const char letter : letters) {
                    volume.write(item + "/" + letter, std::string(3, letter));
                    std::filesystem::last_write_time(volume.host(item + "/" + letter), then);
                }
                if (!letters.empty()) std::filesystem::last_write_time(volume.host(item), then);
            }
            if (isRecovered) {
                EXPECT_EQ(recoverInterruptedRemovals(alice(), volume.files(), clock, log).strayCopies,
                          c.then == aside ? std::vector{Path(aside)} : std::vector<Path>());
            }
            const auto report =
                UndoService({volume.files(), administrator, session, log, clock}, alice()).undoRun(root);
            if (report && c.then == beside) {
                EXPECT_EQ(report->renamed, std::vector{Path(beside)});
            }
            EXPECT_EQ(report && !report->failures.empty(), c.then == aside);
            EXPECT_TRUE(volume.exists(c.then + "/b"));
            for (const auto& path : {aside, beside, copy})
                EXPECT_EQ(volume.exists(path), path == c.then) << path;
            EXPECT_TRUE(volume.exists(place + "/c"));
            for (const auto& path : {root.string(), std::string("/Applications")})
                std::filesystem::remove_all(volume.host(path));
        }
}

TEST_F(Undo, TakesAwayTheOldNameThatAnEarlierOneLeft) {
    const std::string back = "/Users/alice/Library/Caches/back.db";
    for (const auto& name : {back, std::string("/Users/alice/Library/Caches/back 2.db")}) {
        SCOPED_TRACE(name);
        manifest.entries = {moveEntry(1, root, back)};
        const auto& quarantined = *manifest.entries[0].destination;
        volume.write(quarantined, "item");
        volume.write(back, "another");
        std::filesystem::remove(volume.host(name));
        std::filesystem::create_hard_link(volume.host(quarantined), volume.host(name));
        const auto report = undo();
        EXPECT_EQ(report.restoredCount, 1);
        EXPECT_EQ(report.renamed, name == back ? std::vector<Path>() : std::vector{Path(name)});
        EXPECT_FALSE(volume.exists(quarantined));
        EXPECT_FALSE(volume.exists("/Users/alice/Library/Caches/back 3.db"));
        EXPECT_EQ(volume.exists("/Users/alice/Library/Caches/back 2.db"), name != back);
    }
}

TEST_F(Undo, AForgedManifestDoesNotHoldTheLockForHours) {
    for (int number = 1; number <= 5'000; ++number)
        manifest.entries.push_back(moveEntry(number, root, fmt::format("/Library/Caches/{}", number)));
    // Items that an interrupted undo seems to have left, and names that are all taken.
    for (int number = 2; number <= 100; ++number)
        volume.write(fmt::format("/Library/Caches/taken {}", number), "");
    volume.write("/Library/Caches/taken", "");
    for (int number = 1; number <= 100; ++number) {
        manifest.entries.push_back(moveEntry(5'000 + number, root, "/Library/Caches/taken"));
        volume.write((root / fmt::format("{:04}/.tidwen-moved-taken", 5'000 + number)).string(), "");
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_GE(undo().failures.size(), 5'000u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Undo, ComparesTheCopyOfAnEarlierOneWithinALimit) {
    const auto entry = moveEntry(1, root, "/Library/Caches/a");
    const std::string item = *entry.destination, copy = "/Library/Caches/.tidwen-copy-a";
    for (const bool isStopped : {false, true}) {
        for (const auto& path : {item, copy}) {
            volume.write(path, "x");
            if (!isStopped) std::filesystem::resize_file(volume.host(path), std::uint64_t{5} << 30);
        }
        ASSERT_TRUE(writeManifest({.createdAt = runDate, .quarantineRoot = root, .entries = {entry}},
                                  root / manifestFileName, volume.files()));
        StopSource source;
        if (isStopped) source.requestStop();
        const auto report = UndoService({volume.files(), administrator, session, log, clock}, alice())
                                .undoRun(root, {}, {.stop = source.token()});
        ASSERT_TRUE(report);
        EXPECT_EQ(report->failures.size(), isStopped ? 1u : 0u);
        EXPECT_EQ(volume.exists(item), isStopped);
        EXPECT_TRUE(volume.exists(copy));
    }
}

TEST_F(Undo, ItemsThatLayInOneAnotherComeBackInOneAnother) {
    const std::string vendor = "/Library/Application Support/Corvella";
    quarantined(1, vendor + "/Notes/cache");
    volume.write((root / "0002/Notes/data").string(), "");
    volume.write((root / "0003/Corvella/shared").string(), "");
    const auto working =
        std::exchange(administrator.answer, [](const auto&) { return Message{"failure.adminCancelled"}; });
    EXPECT_THAT(
        lines(undo({moveEntry(2, root, vendor + "/Notes"), moveEntry(3, root, vendor, true)}).failures),
        ElementsAre(vendor + ": failure.adminCancelled", vendor + "/Notes: failure.outerNotRestored",
                    vendor + "/Notes/cache: failure.outerNotRestored"));
    administrator.answer = working;
    EXPECT_EQ(undo().restoredCount, 3);
    for (const auto* item : {"/shared", "/Notes/data", "/Notes/cache"})
        EXPECT_TRUE(volume.exists(vendor + item)) << item;
    EXPECT_EQ(volume.files().list(Path(vendor).parent())->size(), 1u);
}

TEST_F(Undo, OfSingleItemsLeavesTheRestForLater) {
    const std::string agent = "/Users/alice/Library/LaunchAgents/agent.plist",
                      folder = "/Users/alice/Library/N";
    quarantined(1, agent);
    quarantined(2, folder + "/inner");
    volume.write((root / "0003/N/data").string(), "");
    manifest.entries.push_back(moveEntry(3, root, folder));
    manifest.entries.push_back(bootoutEntry(4, "agent", false, agent));
    quarantined(5, "/Users/alice/Library/taken");
    volume.write("/Users/alice/Library/taken", "");
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    UndoService service({volume.files(), administrator, session, log, clock}, alice());

    const auto plan = service.planRun(root, {agent, folder + "/inner", "/Users/alice/Library/taken"});
    ASSERT_TRUE(plan);
    std::map<std::string, std::string> goes;
    for (const auto& item : plan->items)
        goes[item.oldPlace.string()] = item.destination ? item.destination->string() : item.problem->key;
    EXPECT_THAT(goes, ElementsAre(Pair(agent, agent), Pair(folder + "/inner", "failure.outerNotRestored"),
                                  Pair("/Users/alice/Library/taken", "/Users/alice/Library/taken 2")));
    EXPECT_THAT(plan->jobs, ElementsAre("agent"));
    EXPECT_EQ(readHistoryEntry(root, volume.files())->pendingMoves, 4) << "nothing was changed";

    EXPECT_THAT(lines(service.undoRun(root, {folder + "/inner"})->failures),
                ElementsAre(folder + "/inner: failure.outerNotRestored"));
    EXPECT_EQ(*service.undoRun(root, {agent}),
              (UndoReport{.restoredCount = 1, .totalCount = 1, .failures = {}, .relaunchedJobs = 1}));
    EXPECT_EQ(readHistoryEntry(root, volume.files())->pendingMoves, 3);
    EXPECT_EQ(service.planRun(root)->items.size(), 3u);
    EXPECT_EQ(service.undoRun(root)->restoredCount, 3);
    EXPECT_TRUE(volume.exists(folder + "/inner"));
}

TEST_F(Undo, AHostileManifestMovesNothing) {
    const auto item = (root / "0001/item").string();
    volume.write(item, "");
    volume.write("/Library/Secrets/key", "");
    volume.write("/System/Library/evil.plist", "");
    volume.link((root / "0002").string(), "/Library/Secrets");
    volume.link("/Users/alice/Library/Caches/out", "/System");
    const std::pair<std::string, std::string> hostile[] = {
        {"/", item},
        {"", item},
        {"Library/Caches/x", item},
        {"/System/Library/x", item},
        {"/Users/alice", item},
        {"/Users/alice/Library/Caches/../../.ssh/x", item},
        {"/Users/alice/Library/Caches/out/x", item},
        {(root / "elsewhere").string(), item},
        {"/Library/Caches/key", "/Library/Secrets/key"},
        {"/Library/Caches/key", (root / "0002/key").string()},
        {"/Library/Caches/key", root.string() + "/../../../../Library/Secrets/key"},
        {"/Library/Caches/x", alice().trash().string()},
    };
    for (const auto& [source, destination] : hostile)
        for (const bool requiresRoot : {false, true}) {
            manifest.entries = {{.operationID = 1,
                                 .source = source,
                                 .destination = destination,
                                 .requiresRoot = requiresRoot,
                                 .bundleID = ""}};
            EXPECT_THAT(lines(undo().failures), ElementsAre(source + ": failure.blockedBySafetyPolicy"));
        }
    for (const bool isSystemDomain : {false, true}) {
        manifest.entries = {bootoutEntry(1, "evil", isSystemDomain, "/System/Library/evil.plist")};
        EXPECT_THAT(lines(undo().failures), IsEmpty()) << "nothing was asked for that a removal does";
    }
    EXPECT_THAT(administrator.batches, IsEmpty());
    EXPECT_THAT(session.batches, IsEmpty());
    EXPECT_TRUE(volume.exists(item) && volume.exists("/Library/Secrets/key"));
    EXPECT_TRUE(log.contains("Undo move blocked by path policy: /System/Library/x"));
}

TEST_F(Undo, ATakenPlaceGivesTheNextFreeName) {
    const Path folder("/Users/alice/Library/Caches");
    std::string longName = ".plist"; // too long with a number, and a cut may split a character
    while (longName.size() < 254)
        longName.insert(0, "é");
    for (const std::string taken :
         {"Foo.plist", "two.part.gz", "two.part 2.gz", ".hidden", "plain", "org.two.notes", longName.c_str()})
        volume.write((folder / taken).string(), "");
    volume.link((folder / "plain 2").string(), "nowhere");
    const std::pair<std::string, std::string> cases[] = {
        {"free.txt", "free.txt"},
        {"Foo.plist", "Foo 2.plist"},
        {"two.part.gz", "two.part 3.gz"},
        {".hidden", ".hidden 2"},
        {"plain", "plain 3"},
        {"org.two.notes", "org.two.notes 2"},
        {longName, shortened(longName, 246) + " 2.plist"},
    };
    for (const auto& [source, expected] : cases)
        EXPECT_EQ(restoreTarget(folder / source, volume.files()), folder / expected);

    std::set<Path> taken;
    for (int n = 2; n <= 999; ++n)
        taken.insert(folder / fmt::format("Foo {}.plist", n));
    const auto last = restoreTarget(folder / "Foo.plist", volume.files(), taken).lastComponent();
    EXPECT_TRUE(last.starts_with("Foo ") && Uuid::parse(last.substr(4))) << last;

    quarantined(1, (folder / "Foo.plist").string(), true);
    quarantined(2, (folder / "Foo.plist").string());
    const auto report = undo();
    EXPECT_EQ(report.restoredCount, 2);
    EXPECT_THAT(report.renamed, ElementsAre(folder / "Foo 3.plist", folder / "Foo 2.plist"));
    EXPECT_TRUE(volume.exists((folder / "Foo 3.plist").string()));
}

} // namespace
} // namespace tidwen::test
