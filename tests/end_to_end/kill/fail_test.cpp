// The calls that change the disk fail, one run per call: the program reports correctly what failed, and
// recovery and undo restore everything.

#include "end_to_end/kill/faulty_volume.h"

#include <cerrno>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace tidwen::test {
namespace {

const std::vector<Fault> faults = {{.kind = std::to_string(EIO)},
                                   {.kind = std::to_string(ENOSPC)},
                                   {.kind = std::to_string(EACCES)},
                                   {.kind = std::to_string(ENOMEM)},
                                   {.kind = std::to_string(EIO), .lasts = true}};

class Fail : public testing::TestWithParam<Disks> {
  protected:
    static void sweep(const std::string& what,
                      const std::function<bool(const FaultyVolume&, const Fault&)>& runWith) {
        if (const auto reason = sweepFaults(GetParam(), what, faults, runWith)) GTEST_SKIP() << *reason;
    }

    /// The program exited normally. After success everything is complete, after a refusal nothing is changed,
    /// otherwise an error is printed.
    static void expectTruth(const Ended& ended, const FaultyVolume& volume, bool isComplete) {
        EXPECT_THAT(ended.exitCode, testing::AllOf(testing::Ge(0), testing::Le(2))) << ended.hit;
        EXPECT_NE(ended.output, "") << ended.hit;
        if (ended.exitCode == 0) {
            EXPECT_TRUE(isComplete) << ended.hit << "\n" << ended.output;
        }
        if (ended.exitCode == 2) {
            EXPECT_EQ(volume.changes(), Words()) << ended.hit << "\n" << ended.output;
        }
    }

    /// On a working disk the user's commands restore everything.
    static void expectPutBack(const FaultyVolume& volume, const Ended& after) {
        const auto recovered = volume.recover();
        EXPECT_EQ(recovered.exitCode, 0) << after.hit << "\n" << recovered.output;
        const auto undone = volume.undo(); // refused if nothing can be undone
        EXPECT_NE(undone.exitCode, 1) << after.hit << "\n" << undone.output;
        EXPECT_EQ(volume.changes(), Words()) << after.hit << "\n"
                                             << after.output << recovered.output << undone.output;
        EXPECT_EQ(volume.hiddenItems(), Words()) << after.hit;
    }
};

TEST_P(Fail, ARemovalSaysWhatItLeftAndIsPutBack) {
    sweep("failing removal", [](const FaultyVolume& volume, const Fault& fault) {
        const auto ended = volume.remove(fault);
        const auto left = volume.itemsLeft();
        expectTruth(ended, volume,
                    left == Words{"/Users/alice/Library/Logs/keep me.log"} && volume.hiddenItems().empty());
        if (ended.exitCode == 1) {
            for (const auto& item : volume.takenItemsLeft())
                EXPECT_THAT(ended.output, testing::HasSubstr("  " + item + ": ")) << ended.hit;
        }
        expectPutBack(volume, ended);
        return ended.hit.empty();
    });
}

TEST_P(Fail, AnUndoSaysWhatItLeftAndIsMadeAgain) {
    sweep("failing undo", [](const FaultyVolume& volume, const Fault& fault) {
        EXPECT_EQ(volume.remove().exitCode, 0);
        const auto ended = volume.undo(fault);
        expectTruth(ended, volume, volume.changes().empty() && volume.hiddenItems().empty());
        expectPutBack(volume, ended);
        return ended.hit.empty();
    });
}

TEST_P(Fail, ARecoverySaysWhatItLeftAndIsMadeAgain) {
    sweep("failing recovery", [](const FaultyVolume& volume, const Fault& fault) {
        EXPECT_TRUE(volume.remove({.at = GetParam().trashElsewhere ? 60 : 20}).killed);
        const auto ended = volume.recover(fault);
        EXPECT_THAT(ended.exitCode, testing::AnyOf(0, 1)) << ended.hit;
        EXPECT_NE(ended.output, "") << ended.hit;
        expectPutBack(volume, ended);
        return ended.hit.empty();
    });
}

TEST_P(Fail, APurgeSaysWhatItLeftAndIsMadeAgain) {
    sweep("failing purge", [](const FaultyVolume& volume, const Fault& fault) {
        EXPECT_EQ(volume.remove().exitCode, 0);
        const auto left = volume.itemsLeft();
        const auto ended = volume.purge(fault);
        EXPECT_THAT(ended.exitCode, testing::AnyOf(0, 1)) << ended.hit << "\n" << ended.output;
        if (ended.exitCode == 0) {
            EXPECT_TRUE(volume.isTrashCleared()) << ended.hit;
        } else {
            EXPECT_THAT(ended.output, testing::HasSubstr("/Users/alice/.Trash/Tidwen - ")) << ended.hit;
            EXPECT_NE(volume.purge().exitCode, 1) << ended.hit; // refused if only its folder was left
        }
        EXPECT_TRUE(volume.isTrashCleared()) << ended.hit;
        EXPECT_EQ(volume.itemsLeft(), left) << ended.hit;
        return ended.hit.empty();
    });
}

INSTANTIATE_TEST_SUITE_P(Disks, Fail, everyDisks(), nameOf);

} // namespace
} // namespace tidwen::test
