#include "base/executor.h"
#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "operations/administrator_prompt.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"

#include "operations/recording_runner.h"
#include "quarantine/entries.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_lookup.h"
#include "quarantine/trash_lock.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

class History : public testing::Test {
  protected:
    Path folder(const std::string& name) const { return user.trash() / ("Tidwen - " + name); }

    void run(const std::string& name, int secondsAfter, std::size_t bytes = 1) {
        const auto root = folder(name);
        const auto entry = moveEntry(1, root, "/Users/alice/Library/Caches/" + name);
        volume.write(*entry.destination, std::string(bytes, 'x'));
        EXPECT_TRUE(writeManifest({.createdAt = runDate + std::chrono::seconds(secondsAfter),
                                   .quarantineRoot = root,
                                   .apps = {{name, "com.example.notes"}},
                                   .entries = {entry}},
                                  root / manifestFileName, volume.files()));
    }
    std::vector<std::string> names() const {
        return eachOf(model.entries.get(),
                      [](const auto& entry) { return entry.manifest.apps.front().name; });
    }
    std::vector<std::string> loaded(HistoryModel::Sizes sizes = HistoryModel::Sizes::leftOut) {
        model.load(sizes);
        drain();
        return names();
    }
    void drain() { queues.settle(); }

    TemporaryVolume volume;
    UserEnvironment user{alice().home, ::geteuid(), {}, {}}; // owner of what the test writes
    RecordingLog log;
    RecordingRunner runner;
    MemoryDefaults settings;
    Texts texts; // prints keys
    SteppedQueues queues;
    MainQueue &main = queues.main, &background = queues.background;
    AdminScriptRunnerError prompt{AdminScriptRunnerError::Kind::authorizationCancelled};
    QuarantinePurge purge{volume.files(), user, [this](const std::string&) { return tl::unexpected(prompt); },
                          log};
    FixedClock clock;
    UndoService undoService{{volume.files(), runner, runner, log, clock}, user};
    HistoryModel model{{volume.files(), undoService, purge, settings, texts, main, background}, user};
};

TEST_F(History, CountsRunsForWhichTheBudgetDoesNotSuffice) {
    for (const auto* name : {"a", "b", "c"})
        run(name, 0);
    const auto first = volume.read((folder("a") / manifestFileName).string()).size();
    const ReadBudget budget({.bytes = static_cast<std::int64_t>(first) + 1});
    EXPECT_EQ(loadHistory(user, volume.files(), false, budget).size(), 1u);
    EXPECT_EQ(budget.leftOut(), 2u);
    // Runs not read because the budget was exhausted are not reported as unfinished.
    for (const auto* name : {"0 first", "1 second"})
        EXPECT_TRUE(writeJournal({.createdAt = runDate, .quarantineRoot = folder(name)},
                                 folder(name) / journalFileName, volume.files()));
    const ReadBudget little({.bytes = 1});
    const auto runs = loadPastRuns(user, volume.files(), false, little);
    EXPECT_EQ(runs.entries.size() + runs.leftOut.size(), 5u);
    EXPECT_THAT(runs.unfinished, IsEmpty());
}

TEST_F(History, LooksForItemsSpendTheBudgetToo) {
    run("a", 0);
    run("b", 0);
    static int looks;
    looks = 0;
    // Each reading of the clock takes one second of four.
    const ReadBudget budget({}, [] { return std::chrono::nanoseconds(std::chrono::seconds(++looks)); });
    EXPECT_THAT(loadHistory(user, volume.files(), false, budget), IsEmpty());
    EXPECT_EQ(budget.leftOut(), 2u);
}

TEST_F(History, AWordMeansTheRunOfThatName) {
    for (const auto* name : {"Kip", "KIP", "Caf\u00e9", "Other"})
        run(name, 0);
    auto runs = loadPastRuns(user, volume.files(), false);
    runs.unfinished = {{.root = folder("OTHER")}};
    runs.leftOut = {folder("Too much")};
    const std::pair<std::string, std::string> cases[] = {
        {"Tidwen - Kip", "Tidwen - Kip"},
        {"Tidwen - KIP", "Tidwen - KIP"},
        {folder("KIP").string(), "Tidwen - KIP"},
        {"tidwen - cafe\u0301", "Tidwen - Caf\u00e9"},
        {"Tidwen - OTHER", "Tidwen - OTHER"},
        {"Tidwen - Too much", "Tidwen - Too much"},
        {"1", "history.run.numbersUncertain %lld"},
        {"5", "history.run.unknown %@"}, // interrupted runs have no number
        {"Kip", "history.run.unknown %@"},
        {"tidwen - kip", "history.run.ambiguous %@ %@"},
        {folder("other").string(), "history.run.ambiguous %@ %@"},
    };
    for (const auto& [word, meant] : cases) {
        const auto found = findRun(runs, word);
        EXPECT_EQ(found ? found->lastComponent() : found.error().key, meant) << word;
    }
    runs.leftOut.clear();
    EXPECT_EQ(findRun(runs, "1"), runs.entries[0].root);
    const auto refusal = findRun(runs, "tidwen - kip").error();
    EXPECT_THAT(Texts().text(refusal), testing::AnyOf(testing::EndsWith("Tidwen - Kip, Tidwen - KIP"),
                                                      testing::EndsWith("Tidwen - KIP, Tidwen - Kip")))
        << "of one moment";
}

TEST_F(History, SaysWhatItCannotTell) {
    volume.write((folder("Cut") / journalFileName).string(), "{");
    loaded();
    EXPECT_EQ(model.unfinishedRuns.get().size(), 1u);
    {
        const auto other = lockTrash(user, volume.files());
        loaded();
        EXPECT_TRUE(model.isAnotherAtWork.get());
        EXPECT_THAT(model.unfinishedRuns.get(), IsEmpty()) << "it may be at it";
    }
    loaded();
    EXPECT_FALSE(model.isAnotherAtWork.get());
    EXPECT_FALSE(model.unreadable.get());
    std::filesystem::remove_all(volume.host(user.trash().string()));
    volume.link(user.trash().string(), "Documents");
    loaded();
    EXPECT_EQ(model.unreadable.get()->key, "history.unreadable %@ %@");
}

TEST_F(History, ListsWhatCanBeReadNewestFirst) {
    run("Old", 0);
    run("Twin b", 5);
    run("New", 9, 500'000);
    run("Twin a", 5);
    const auto written = [&](const char* name) {
        return volume.host((folder(name) / manifestFileName).string());
    };
    std::filesystem::last_write_time(written("Twin a"), std::filesystem::last_write_time(written("Twin b"))
                                                            + std::chrono::seconds(1));
    volume.write((folder("Damaged") / manifestFileName).string(), "{");
    volume.link((folder("Linked") / manifestFileName).string(), "../Tidwen - Old/tidwen-manifest.json");
    EXPECT_THAT(loaded(), ElementsAre("New", "Twin a", "Twin b", "Old"));
    EXPECT_FALSE(model.entries.get().front().sizeBytes);
    loaded(HistoryModel::Sizes::measured);
    EXPECT_GE(model.entries.get().front().sizeBytes.value_or(0), 500'000);

    std::filesystem::remove_all(volume.host(folder("Twin b").string()));
    volume.write((folder("Old") / manifestFileName).string(), "{");
    EXPECT_THAT(loaded(), ElementsAre("New", "Twin a"));
}

TEST_F(History, OfTwoLoadsTheLaterWins) {
    run("Only", 0);
    model.load(HistoryModel::Sizes::leftOut);
    model.load(HistoryModel::Sizes::measured);
    background.drain();
    int told = 0;
    const auto watching = model.entries.observe([&](const auto&) { ++told; });
    drain();
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(model.entries.get().front().sizeBytes);
    EXPECT_FALSE(model.isLoading.get());
}

TEST_F(History, UndoLocksOutTheRestAndReloads) {
    run("One", 1);
    run("Two", 0);
    loaded();
    const auto entries = model.entries.get();
    model.undo(entries[0]);
    EXPECT_EQ(model.busyEntryID.get(), folder("One").string());
    std::vector<std::string> answers; // both at once
    model.undo(entries[1].root, [&](const auto& outcome) { answers.push_back(outcome.error().reason->key); });
    model.removeAll(model.entries.get(),
                    [&](const auto& outcome) { answers.push_back(outcome.error().reason->key); });
    EXPECT_THAT(answers, ElementsAre("history.busy", "history.busy"));
    drain();
    EXPECT_EQ(model.lastUndo.get()->restoredCount, 1);
    EXPECT_FALSE(model.busyEntryID.get());
    EXPECT_TRUE(volume.exists("/Users/alice/Library/Caches/One"));
    ASSERT_THAT(names(), ElementsAre("One", "Two"));
    EXPECT_THAT(model.entries.get()[0].pendingItems, IsEmpty());
    EXPECT_THAT(model.entries.get()[1].pendingItems, ElementsAre("/Users/alice/Library/Caches/Two"));

    model.undo(entries[0]); // as from a list that another process has made outdated
    drain();
    EXPECT_EQ(model.errorMessage(), "history.undo.nothingLeft Tidwen - One");
    EXPECT_FALSE(model.lastUndo.get()) << "it came to nothing";
}

TEST_F(History, RefusalsLeaveTheListAndAreToldUnlessThePromptWasDismissed) {
    run("One", 0);
    loaded();
    {
        const auto other = lockTrash(user, volume.files());
        model.removeAll(model.entries.get());
        drain();
        EXPECT_EQ(model.errorMessage(), "failure.trashBusy");
        EXPECT_FALSE(model.busyEntryID.get());
    }
    settings.fault = Message{"unreadable"};
    model.removeAll(model.entries.get());
    drain();
    EXPECT_EQ(model.errorMessage(), "unreadable");
    settings.fault.reset();
    auto stranger = user;
    stranger.userID += 1; // so that everything in the folder has another owner
    QuarantinePurge asking(
        volume.files(), stranger, [this](const std::string&) { return tl::unexpected(prompt); }, log);
    HistoryModel dismissed({volume.files(), undoService, asking, settings, texts, main, background}, user);
    std::optional<std::string> told = "nothing";
    dismissed.remove(model.entries.get(), [&](const auto& outcome) {
        told = outcome || !outcome.error().reason ? std::nullopt : std::optional(outcome.error().reason->key);
    });
    drain();
    EXPECT_EQ(told, std::nullopt);
    EXPECT_FALSE(dismissed.errorMessage());

    std::filesystem::remove(volume.host((folder("One") / manifestFileName).string()));
    model.removeAll(model.entries.get());
    drain();
    EXPECT_EQ(model.errorMessage(), "failure.blockedBySafetyPolicy");
    EXPECT_THAT(names(), ElementsAre("One"));
    EXPECT_TRUE(volume.exists("/Users/alice/.Trash/Tidwen - One/0001/One"));
}

TEST_F(History, DeletesOneOrAll) {
    for (const auto* name : {"A", "B", "C"})
        run(name, 0);
    volume.write((user.trash() / "Tidwen - mine/letter.txt").string(), "of the user");
    volume.write((user.trash() / "photo.jpg").string(), "of the user");
    volume.makeFolder(folder("Never begun - 2026-11-14 17-26-00").string());
    loaded();
    model.remove({model.entries.get()[1]});
    drain();
    EXPECT_THAT(names(), ElementsAre("C", "A"));
    EXPECT_TRUE(model.entries.get()[0].sizeBytes);
    model.removeAll(model.entries.get());
    drain();
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_FALSE(model.errorMessage());
    EXPECT_FALSE(volume.exists(folder("Never begun - 2026-11-14 17-26-00").string()));
    EXPECT_TRUE(volume.exists("/Users/alice/.Trash/Tidwen - mine/letter.txt"));
    EXPECT_TRUE(volume.exists("/Users/alice/.Trash/photo.jpg"));
}

TEST_F(History, WorkThatComesBackAfterItsEndIsDropped) {
    run("One", 0);
    auto closed = std::make_unique<HistoryModel>(
        HistoryModel::Ports{volume.files(), undoService, purge, settings, texts, main, background}, user);
    closed->load();
    closed.reset();
    drain();
}

} // namespace
} // namespace tidwen::test
