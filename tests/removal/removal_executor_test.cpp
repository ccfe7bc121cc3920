#include "base/message.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "operations/recording_runner.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery.h"
#include "quarantine/undo_service.h"
#include "removal/removal_executor.h"
#include "removal/removal_report.h"
#include "removal/unmovable_items.h"
#include "scan/policy/removability.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tidwen::test {
namespace {

class Executor : public testing::Test {
  protected:
    Executor() {
        volume.makeFolder(root.string());
        administrator.asksForPassword = true;
    }

    RemovalOperation move(int id, const std::string& name, bool requiresRoot) {
        volume.write("/Library/Caches/" + name, name);
        return {.id = id,
                .kind = operation::Move{Path("/Library/Caches") / name, root / name},
                .requiresRoot = requiresRoot,
                .displayName = name,
                .bundleID = "n"};
    }

    FileResult<RemovalReport> execute(const std::vector<RemovalOperation>& plan,
                                      const StepControl& control = {}) {
        return RemovalExecutor({volume.files(), user, administrator, log})
            .execute(plan, {root, false}, {{"Notes", "n"}}, RemovalMode::uninstall, Timestamp{}, control);
    }

    std::optional<Message> done(const RemovalOperation& each) {
        return screenedMove(std::get<operation::Move>(each.kind), volume.files(),
                            PathPolicy(alice(), volume.files()), log);
    }

    bool hasJournal() { return volume.exists((root / journalFileName).string()); }

    std::vector<int> manifestIDs() {
        return eachOf(readManifest(root, volume.files()).value().entries, &ManifestEntry::operationID);
    }

    const Path root = alice().trash() / "Tidwen - Notes";
    TemporaryVolume volume;
    RecordingRunner user, administrator;
    RecordingLog log;
};

TEST_F(Executor, WritesTheJournalFirstAndTheManifestLast) {
    const std::vector plan = {move(1, "a", true), move(2, "b", false), move(3, "c", true)};
    std::vector<int> ran;
    user.answer = administrator.answer = [&](const RemovalOperation& each) -> std::optional<Message> {
        EXPECT_EQ(readJournal(root, volume.files()).value().planned.size(), 3u);
        ran.push_back(each.id);
        if (each.id == 3) return Message{"failure.adminCancelled"};
        return done(each);
    };
    const auto report = execute(plan);
    ASSERT_TRUE(report);
    EXPECT_THAT(ran, ElementsAre(2, 1, 3));
    EXPECT_EQ(administrator.batches.size(), 1u);
    EXPECT_EQ(report->results[0].operationID, 2);
    EXPECT_THAT(manifestIDs(), ElementsAre(1, 2));
    EXPECT_FALSE(hasJournal());
    ASSERT_EQ(report->failures().size(), 1u);
    EXPECT_EQ(report->failures()[0].operation.id, 3);
    EXPECT_EQ(report->failures()[0].reason.key, "failure.adminCancelled");
    EXPECT_TRUE(log.contains("Removed 2/3 traces"));
}

TEST_F(Executor, EndsAfterTheStepAtHandWhenItIsToldTo) {
    using Lines = std::vector<std::string>;
    const Lines all = {"1/4 move a", "2/4 move b", "4/4 administrator "};
    const struct {
        int stopIn; ///< the step; 0: before the journal
        std::size_t told;
        std::size_t done;
    } cases[] = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 4}, {4, 3, 4}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stopIn);
        volume.makeFolder(root.string());
        StopSource stop;
        if (c.stopIn == 0) stop.requestStop();
        user.answer = administrator.answer = [&](const RemovalOperation& each) -> std::optional<Message> {
            const auto& step = std::get<operation::Move>(each.kind);
            (void)volume.files().move(step.source, step.destination);
            if (each.id == c.stopIn) stop.requestStop();
            return std::nullopt;
        };
        Lines told;
        const auto report =
            execute({move(1, "a", false), move(2, "b", false), move(3, "c", true), move(4, "d", true)},
                    {stop.token(), [&](const StepProgress& at) {
                         told.push_back(std::to_string(at.step) + "/" + std::to_string(at.total) + " "
                                        + at.kind + " " + at.item);
                     }});
        ASSERT_TRUE(report);
        if (c.told > 0) {
            EXPECT_EQ(told.back(), std::to_string(c.done) + "/4 finish ");
            told.pop_back();
        }
        EXPECT_EQ(told, Lines(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(c.told)));
        ASSERT_EQ(report->results.size(), 4u);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(report->results[i].failureReason,
                      i < c.done ? std::nullopt : std::optional(Message{"failure.stopped"}));
        EXPECT_EQ(report->wasStopped(), c.done < 4);
        EXPECT_EQ(report->isUntouched(), c.done == 0);
        EXPECT_EQ(manifestIDs().size(), c.done);
        EXPECT_FALSE(hasJournal());
        (void)UndoService({volume.files(), administrator, user, log, FixedClock()}, alice()).undoRun(root);
        for (const auto* name : {"a", "b", "c", "d"})
            EXPECT_TRUE(volume.exists(std::string("/Library/Caches/") + name)) << name;
        std::filesystem::remove_all(volume.host(root.string()));
    }
}

TEST_F(Executor, KnowsItsPhasesBeforeTheFirstStep) {
    auto refused = move(4, "d", false);
    refused.refusal = Message{"failure.changed"};
    const auto phases = RemovalExecutor({volume.files(), user, administrator, log})
                            .phases({move(1, "a", true), move(2, "b", false), move(3, "c", false), refused});
    const auto at = [&](const std::optional<StepProgress>& step) {
        std::string line;
        for (const auto& phase : phases.at(step))
            line += phase.kind + " " + std::to_string(phase.done) + "/" + std::to_string(phase.total)
                    + " .>+"[static_cast<std::size_t>(phase.state) + 1] + " ";
        return line;
    };
    EXPECT_EQ(at(std::nullopt), "move 0/2. administrator 0/1. finish 0/0. ");
    EXPECT_EQ(at(StepProgress{2, 3, "move"}), "move 1/2> administrator 0/1. finish 0/0. ");
    EXPECT_EQ(at(StepProgress{3, 3, "administrator"}), "move 2/2+ administrator 0/1> finish 0/0. ");
    EXPECT_EQ(at(StepProgress{3, 3, "finish"}), "move 2/2+ administrator 1/1+ finish 0/0> ");
}

TEST_F(Executor, TouchesNothingWithoutAJournal) {
    volume.makeFolder((root / journalFileName / "in the way").string());
    EXPECT_FALSE(execute({move(1, "a", false)}));
    EXPECT_THAT(user.batches, IsEmpty());
}

TEST_F(Executor, WithoutAManifestTheJournalStays) {
    user.answer = [&](const auto&) {
        volume.makeFolder((root / manifestFileName / "in the way").string());
        return std::nullopt;
    };
    const auto report = execute({move(1, "a", false)});
    ASSERT_TRUE(report);
    EXPECT_TRUE(report->manifestFailure);
    EXPECT_TRUE(hasJournal());
    EXPECT_THAT(administrator.batches, IsEmpty()) << "no password without need";
}

TEST_F(Executor, AFolderThatGoesAwayInTheMiddleIsNotMadeAnew) {
    const Path folders[] = {root, alice().trash(), alice().home};
    for (const auto& folder : folders) {
        volume.makeFolder(root.string());
        user.answer = [&](const RemovalOperation& each) {
            if (each.id == 2) std::filesystem::rename(volume.host(folder.string()), volume.host("/aside"));
            return done(each);
        };
        const auto report = execute({move(1, "a", false), move(2, "b", false)});
        ASSERT_TRUE(report);
        EXPECT_FALSE(volume.exists(folder.string()));
        EXPECT_EQ(volume.read("/Library/Caches/b"), "b");
        EXPECT_EQ(report->manifestFailure, (Message{"failure.quarantineGone %@", {root.string()}}));
        const auto reasons = eachOf(report->failures(), &RemovalReport::Failure::reason);
        EXPECT_THAT(reasons, testing::Each(Message{quarantineGoneKey}));
        EXPECT_EQ(reasons.size(), 2u) << "what went away with it is not done either";

        std::filesystem::rename(volume.host("/aside"), volume.host(folder.string()));
        recoverInterruptedRemovals(alice(), volume.files(), SystemClock(), log);
        EXPECT_THAT(manifestIDs(), ElementsAre(1));
        std::filesystem::remove_all(volume.host(root.string()));
    }
}

TEST_F(Executor, AMoveThatNeitherEndedNorWasTakenBackIsLeftToRecovery) {
    user.answer = [&](const auto&) {
        (void)volume.files().move(Path("/Library/Caches/a"), Path("/Library/Caches/.tidwen-moved-a"));
        return Message{"failure.file.io"};
    };
    const auto report = execute({move(1, "a", false)});
    EXPECT_EQ(report->manifestFailure, Message{"failure.moveUnfinished"});
    EXPECT_TRUE(hasJournal());
    recoverInterruptedRemovals(alice(), volume.files(), SystemClock(), log);
    EXPECT_TRUE(volume.exists("/Library/Caches/a"));
    EXPECT_THAT(manifestIDs(), IsEmpty());
}

TEST_F(Executor, WhatSomebodyWroteIntoAnItemWhileItWasMovedIsNotForgotten) {
    user.answer = [&](const auto&) {
        (void)volume.files().move(Path("/Library/Caches/a"), root / "a");
        volume.write("/Library/Caches/.tidwen-moved-a", "written since");
        return std::nullopt;
    };
    for (const bool isRecovered : {true, false}) {
        volume.makeFolder(root.string());
        const auto report = execute({move(1, "a", false)});
        EXPECT_THAT(report->unsettled, ElementsAre("/Library/Caches/a"));
        EXPECT_TRUE(hasJournal());
        if (isRecovered) {
            recoverInterruptedRemovals(alice(), volume.files(), SystemClock(), log);
            EXPECT_EQ(volume.read("/Library/Caches/a"), "written since");
            EXPECT_THAT(manifestIDs(), ElementsAre(1));
            EXPECT_FALSE(hasJournal());
        }
        const auto undone =
            UndoService({volume.files(), administrator, user, log, FixedClock()}, alice()).undoRun(root);
        ASSERT_TRUE(undone);
        EXPECT_EQ(undone->restoredCount, 1);
        const std::string first = isRecovered ? "written since" : "a";
        EXPECT_EQ(volume.read("/Library/Caches/a"), first);
        EXPECT_EQ(volume.read("/Library/Caches/a 2"), isRecovered ? "a" : "written since");
        for (const auto* item : {"/Library/Caches/a", "/Library/Caches/a 2"})
            std::filesystem::remove(volume.host(item));
        std::filesystem::remove_all(volume.host(root.string()));
    }
}

TEST_F(Executor, AJobWhoseAnswerWasLostIsLookedForByItsPropertyList) {
    const Uuid moved = Uuid::random(), kept = Uuid::random();
    const auto job = [](int id, const Uuid& trace) {
        return RemovalOperation{.id = id,
                                .kind = operation::Bootout{"job", true},
                                .requiresRoot = true,
                                .displayName = "job",
                                .traceID = trace,
                                .bundleID = "n"};
    };
    std::vector plan = {job(1, moved), job(2, kept), move(3, "moved", true), move(4, "kept", true)};
    plan[2].traceID = moved;
    plan[3].traceID = kept;
    for (const char* answer : {"failure.noResult", "failure.timedOut", "failure.adminCancelled"}) {
        SCOPED_TRACE(answer);
        volume.makeFolder(root.string());
        administrator.answer = [&](const RemovalOperation& each) {
            if (each.id == 3) (void)volume.files().move(Path("/Library/Caches/moved"), root / "moved");
            return Message{answer};
        };
        const auto report = execute(plan);
        // After a timeout the batch's shell may still move the other one.
        const bool mayGoOn = answer == std::string("failure.timedOut");
        EXPECT_EQ(report->manifestFailure.has_value(), mayGoOn);
        EXPECT_EQ(hasJournal(), mayGoOn);
        if (mayGoOn) recoverInterruptedRemovals(alice(), volume.files(), SystemClock(), log);
        if (answer == std::string("failure.adminCancelled"))
            EXPECT_THAT(manifestIDs(), ElementsAre(3));
        else
            EXPECT_THAT(manifestIDs(), ElementsAre(1, 3));
        std::filesystem::remove_all(volume.host(root.string()));
        volume.write("/Library/Caches/moved", "");
    }
}

TEST_F(Executor, AMoveThatWasMadeButNotReportedIsInTheManifest) {
    const std::vector plan = {move(1, "made", true), move(2, "not made", true)};
    administrator.answer = [&](const RemovalOperation& each) {
        if (each.id == 1) (void)volume.files().move(Path("/Library/Caches/made"), root / "made");
        return Message{"failure.noResult"};
    };
    const auto report = execute(plan);
    EXPECT_EQ(report->failures().size(), 2u);
    EXPECT_THAT(manifestIDs(), ElementsAre(1));
}

TEST(UnmovableItems, KeepAnApplicationWithItsData) {
    const TemporaryVolume volume;
    for (const auto* item : {"/Applications/A.app/a", "/open/cache", "/closed/log", "/closed/A.app/a"})
        volume.write(item, "");
    giveToUnprivileged(volume.hostRoot());
    std::filesystem::permissions(volume.host("/closed"), std::filesystem::perms(0555));
    const struct {
        std::vector<std::string> moved, obstacles;
    } cases[] = {
        {{}, {}},
        {{"/open/cache", "/Applications/A.app"}, {}},
        {{"/open/cache", "/closed/log", "/Applications/A.app"}, {}}, // only the log fails
        {{"/open/cache", "/closed/log", "/closed/A.app"}, {"/closed/log", "/closed/A.app"}},
        {{"/closed/log"}, {"/closed/log"}},
        {{"/gone"}, {}}, // only this fails, with its reason
    };
    asUnprivileged([&] {
        for (const auto& c : cases) {
            std::vector<RemovalOperation> plan;
            for (const auto& item : c.moved) {
                const Path source(item);
                if (source.extension() == "app") plan.push_back(step(0, operation::UnregisterApp{source}));
                plan.push_back(step(0, operation::Move{source, Path("/to")}));
            }
            EXPECT_EQ(eachOf(unmovableItems(plan, volume.files(), MoveRights::own), &Path::string),
                      c.obstacles)
                << testing::PrintToString(c.moved);
        }
    });
}

} // namespace
} // namespace tidwen::test
