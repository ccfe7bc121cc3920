#include "base/message.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "operations/administrator_prompt.h"
#include "operations/recording_runner.h"
#include "platform/file_system.h"
#include "platform/process_runner.h"
#include "platform/user_environment.h"
#include "posix/tree_ownership.h"
#include "quarantine/entries.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
#include "support/fixtures.h"
#include "support/stand_ins.h"
#include "support/watched_files.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen::test {
namespace {

using Kind = QuarantinePurge::Failure::Kind;
using Answer = tl::expected<ProcessResult, AdminScriptRunnerError>;

class Purge : public testing::Test {
  protected:
    Path run(const std::string& name, Timestamp date = runDate) {
        const auto root = user.trash() / ("Tidwen - " + name);
        const Manifest manifest{.createdAt = date,
                                .quarantineRoot = root,
                                .apps = {{name, "com.example.notes"}},
                                .entries = {moveEntry(1, root, "/Users/alice/Notes")}};
        volume.write((root / "0001/Notes").string(), "notes");
        EXPECT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
        user.userID = volume.files().info(root)->ownerID;
        return root;
    }
    QuarantinePurge purger(Answer answer = ProcessResult{}) {
        return QuarantinePurge(
            volume.files(), user,
            [this, answer](const std::string& script) {
                scripts.push_back(script);
                return answer;
            },
            log);
    }

    TemporaryVolume volume;
    UserEnvironment user = alice();
    RecordingLog log;
    Texts texts;
    FixedClock clock;
    std::vector<std::string> scripts;
};

TEST_F(Purge, AgeDecidesWhatExpires) {
    const auto day = std::chrono::hours(24);
    const auto now = runDate + day * 7;
    const auto atCutOff = run("Edge"), older = run("Old", runDate - std::chrono::seconds(1));
    const auto future = run("Future", now + day);
    const auto byAWrongClock = run("Wrong", *parseIso8601("2001-01-01T00:10:00Z"));
    EXPECT_EQ(purger().purgeExpired(0, now + day * 900), 0);
    user.userID += 1; // never a prompt, and never part of a run
    EXPECT_EQ(purger().purgeExpired(7, now), 0);
    EXPECT_TRUE(volume.exists((older / "0001/Notes").string()));
    user.userID -= 1;
    volume.write((older / journalFileName).string(), "left beside the manifest by a run that ended");
    EXPECT_EQ(purger().purgeExpired(7, now), 1);
    EXPECT_FALSE(volume.exists(older.string()));
    EXPECT_TRUE(volume.exists(atCutOff.string()));
    EXPECT_TRUE(volume.exists(future.string()));
    EXPECT_TRUE(volume.exists(byAWrongClock.string()));
    EXPECT_TRUE(scripts.empty());
}

TEST_F(Purge, OneRefusedFolderDeletesNothing) {
    const auto good = run("Good");
    volume.write("/Users/alice/Documents/tidwen-manifest.json", "{}");
    volume.link((user.trash() / "Tidwen - Link").string(), "../Documents");
    volume.makeFolder((user.trash() / "Tidwen - Bare").string());
    volume.write((user.trash() / "Other/tidwen-manifest.json").string(), "{}");
    volume.write((good / "Tidwen - Nested/tidwen-manifest.json").string(), "{}");
    for (const std::string bad : {"/Tidwen - Link", "/Tidwen - Bare", "/Tidwen - Absent", "/Other",
                                  "/Tidwen - Good/Tidwen - Nested", "/Tidwen - Good/../../Documents", ""}) {
        const auto outcome = purger().purge({good, Path(user.trash().string() + bad)});
        ASSERT_FALSE(outcome) << bad;
        EXPECT_EQ(outcome.error().kind,
                  bad == "/Tidwen - Link" ? Kind::escapesThroughSymlink : Kind::notAQuarantineFolder);
    }
    const auto ended = run("Ended"), damaged = run("Damaged"), cut = user.trash() / "Tidwen - Cut";
    volume.write((damaged / manifestFileName).string(), "{");
    for (const auto& root : {ended, damaged, cut})
        volume.write((root / journalFileName).string(), "{}");
    for (const auto& root : {damaged, cut})
        EXPECT_EQ(purger().purge({good, root}).error().kind, Kind::unsettled) << "it may hold whole items";
    EXPECT_TRUE(volume.exists((good / "0001/Notes").string()));
    EXPECT_EQ(purger().purge({ended})->removedFolders, 1) << "its manifest says that it ended";
    EXPECT_TRUE(volume.exists("/Users/alice/Documents/tidwen-manifest.json"));
    EXPECT_TRUE(scripts.empty());
}

TEST_F(Purge, ARunInWhichTheUsersFoldersLieStays) {
    const auto holder = run("Holder"), beside = run("Beside");
    volume.write((holder / "0001/Notes2/Docs/letter").string(), "of the user");
    volume.link("/Users/alice/Documents", (holder / "0001/Notes2/Docs").string());
    EXPECT_FALSE(purger().purge({holder}));
    EXPECT_EQ(purger().purgeExpired(1, runDate + std::chrono::hours(900)), 1);
    EXPECT_TRUE(volume.exists((holder / "0001/Notes2/Docs/letter").string()));
    EXPECT_FALSE(volume.exists(beside.string()));
}

TEST_F(Purge, LinksThatAppearLeadNowhere) {
    volume.write("/Users/alice/Documents/letter.txt", "of the user");
    const auto root = run("Swapped"), beside = run("Beside");
    user.userID += 1; // causes a prompt, during which anything may happen
    QuarantinePurge purge(
        volume.files(), user,
        [&](const std::string&) {
            std::filesystem::rename(volume.host(root.string()), volume.host("/Users/alice/aside"));
            volume.link(root.string(), "../Documents");
            return ProcessResult{};
        },
        log);
    EXPECT_EQ(purge.purge({root})->kept, std::vector{root});

    std::filesystem::rename(volume.host(user.trash().string()), volume.host("/Users/alice/elsewhere"));
    volume.link(user.trash().string(), "elsewhere");
    EXPECT_EQ(purger().purge({beside}).error().kind, Kind::escapesThroughSymlink);
    EXPECT_TRUE(scripts.empty());
    EXPECT_TRUE(volume.exists("/Users/alice/Documents/letter.txt"));
    EXPECT_EQ(volume.files().list(Path("/Users/alice/aside"))->size(), 2u) << "the item and the manifest";
    EXPECT_TRUE(volume.exists("/Users/alice/elsewhere/Tidwen - Beside/0001/Notes"));
}

TEST_F(Purge, CutOffItLeavesNothingThatCountsAsWhole) {
    class Failing : public WatchedFiles {
      public:
        using WatchedFiles::WatchedFiles;
        FileResult<void> removeTree(const Path& path) override {
            if (path.lastComponent().find("0001") == std::string::npos) return WatchedFiles::removeTree(path);
            (void)WatchedFiles::removeTree(path / "Notes/a");
            return tl::unexpected(FileError{.fault = FileFault::busy, .path = path});
        }
    };
    const auto root = user.trash() / "Tidwen - Notes";
    const auto gutted = moveEntry(1, root, "/Users/alice/Notes"),
               whole = moveEntry(2, root, "/Users/alice/b");
    const Manifest manifest{.createdAt = runDate, .quarantineRoot = root, .entries = {gutted, whole}};
    for (const auto* name : {"a", "b"})
        volume.write(*gutted.destination + "/" + name, "notes");
    volume.write(*whole.destination, "b");
    ASSERT_TRUE(writeManifest(manifest, root / manifestFileName, volume.files()));
    Failing files(volume.files());
    EXPECT_EQ(QuarantinePurge(files, user, {}, log).purge({root})->kept, std::vector{root});
    volume.write(*whole.destination, "as if the purge had been killed before");
    const auto entry = readHistoryEntry(root, volume.files());
    ASSERT_TRUE(entry);
    EXPECT_TRUE(entry->isPartlyPurged);
    EXPECT_EQ(entry->pendingItems, ItemChoice{whole.source});
    RecordingRunner administrator, session;
    UndoService::Ports ports{volume.files(), administrator, session, log, clock};
    const auto report = UndoService(ports, user).undoRun(root);
    EXPECT_EQ(report->failures, (std::vector<Problem>{{gutted.source, Message{"failure.partlyPurged"}}}));
    EXPECT_TRUE(volume.exists(whole.source) && !volume.exists(gutted.source));
    EXPECT_EQ(purger().purge({root})->removedFolders, 1);
    EXPECT_FALSE(volume.exists(root.string()));
}

TEST_F(Purge, KeepsTheRunsBeforeWhichItIsToldToStop) {
    const auto first = run("First"), second = run("Second");
    StopSource stop;
    const auto outcome =
        purger().purge({first, second}, {stop.token(), [&](const StepProgress&) { stop.requestStop(); }});
    EXPECT_EQ(outcome->removedFolders, 1);
    EXPECT_EQ(outcome->notBegun, std::vector{second});
    EXPECT_EQ(outcome->kept, std::vector{second});
    EXPECT_TRUE(volume.exists(second.string()) && !volume.exists(first.string()));
}

TEST(PurgeScript, QuotesPaths) {
    EXPECT_EQ(purgeScript({Path("/T/O'Brien"), Path("/T/$(b)")}),
              "d=$(/usr/bin/mktemp -d /private/tmp/tidwen-purge.XXXXXX) || exit 1\n"
              "/bin/mv -- '/T/O'\\''Brien' \"$d/0\" || exit 1\n"
              "/bin/mv -- '/T/$(b)' \"$d/1\" || exit 1\n"
              "/bin/rm -rf -- \"$d\"");
}

TEST_F(Purge, AsksOnlyForForeignItems) {
    const auto mine = run("Mine"); // first, to determine the owner of the items
    EXPECT_EQ(purger().purge({mine})->removedFolders, 1);
    EXPECT_TRUE(scripts.empty());

    const auto root = run("Foreign");
    user.userID += 1;
    const auto fails = [&](Answer answer) {
        const auto outcome = purger(std::move(answer)).purge({root});
        EXPECT_TRUE(volume.exists((root / "0001/Notes").string()));
        return outcome ? QuarantinePurge::Failure{} : outcome.error();
    };
    using Error = AdminScriptRunnerError;
    EXPECT_FALSE(fails(tl::unexpected(Error{Error::Kind::authorizationCancelled})).describe());
    for (const auto& failed : {fails(tl::unexpected(Error{Error::Kind::scriptFailed, "mv: 100% %@ no"})),
                               fails(ProcessResult{1, {}, "mv: 100% %@ no\n"})}) {
        EXPECT_EQ(failed.kind, Kind::elevatedDeleteFailed);
        EXPECT_EQ(Texts().text(*failed.describe()), "mv: 100% %@ no");
    }
    // The name is unique; after a kill the next start restores the original name.
    const auto item = scripts.back().substr(scripts.back().find("/.tidwen-purge-") + 1);
    EXPECT_EQ(item.find("-0001' \"$d/0\""), std::string(".tidwen-purge-").size() + 36) << item;
    const auto hidden = root / item.substr(0, item.find('\''));
    EXPECT_TRUE(volume.files().move(root / "0001", hidden));
    EXPECT_EQ(purger().purgeExpired(0, runDate), 0);
    EXPECT_TRUE(volume.exists((root / "0001/Notes").string()));
    EXPECT_EQ(purger().purge({root})->removedFolders, 1);

    const auto alone = run("Volume");
    user.userID += 1;
    EXPECT_EQ(QuarantinePurge(volume.files(), user, std::nullopt, log).purge({alone})->removedFolders, 1);
}

/// Reports some items as not deletable by this process.
struct FilesOfOthers : WatchedFiles {
    FilesOfOthers(FileSystem& files, Path others) : WatchedFiles(files), others_(std::move(others)) {}
    FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) override {
        return !ownerID && item == others_;
    }
    Path others_;
};

TEST_F(Purge, WithNobodyToAskARunOfOthersStaysWhole) {
    const auto mine = run("Mine"), others = run("Others");
    volume.write((others / "0002/more").string(), "x");
    FilesOfOthers files(volume.files(), others);
    const auto outcome = QuarantinePurge(files, user, std::nullopt, log).purge({others, mine});
    EXPECT_EQ(outcome->removedFolders, 1);
    EXPECT_EQ(outcome->kept, std::vector{others});
    EXPECT_EQ(outcome->othersItems, std::vector{others});
    EXPECT_TRUE(volume.exists((others / "0001/Notes").string()));
    EXPECT_TRUE(volume.exists((others / "0002/more").string()));
}

} // namespace
} // namespace tidwen::test
