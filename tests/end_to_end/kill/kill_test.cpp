// The program is killed at the calls that change the disk, one run per call; afterwards the volume can always
// be restored exactly.

#include "end_to_end/kill/faulty_volume.h"

#include <functional>
#include <string>

namespace tidwen::test {
namespace {

class Kill : public testing::TestWithParam<Disks> {
  protected:
    static void sweep(const std::string& what,
                      const std::function<bool(const FaultyVolume&, const Fault&)>& runWith) {
        if (const auto reason = sweepFaults(GetParam(), what, {{.kind = "kill"}}, runWith))
            GTEST_SKIP() << *reason;
    }
};

TEST_P(Kill, ARemovalCutOffAnywhereIsPutBack) {
    sweep("killed removal", [](const FaultyVolume& volume, const Fault& kill) {
        const auto ended = volume.remove(kill);
        if (!ended.killed) {
            EXPECT_EQ(ended.exitCode, 0) << ended.output;
            EXPECT_EQ(volume.itemsLeft(), Words{"/Users/alice/Library/Logs/keep me.log"});
            return true;
        }
        const auto recovered =
            volume.recover({.at = 1, .kind = "interrupt"}); // which stops after the current step
        EXPECT_EQ(recovered.exitCode, 0) << recovered.output;
        const auto undone = volume.undo(); // refused if nothing had been moved
        EXPECT_NE(undone.exitCode, 1) << undone.output;
        EXPECT_EQ(volume.changes(), Words()) << ended.hit;
        EXPECT_EQ(volume.hiddenItems(), Words()) << ended.hit;
        return false;
    });
}

TEST_P(Kill, ARecoveryCutOffAnywhereIsMadeAgain) {
    sweep("killed recovery", [](const FaultyVolume& volume, const Fault& kill) {
        EXPECT_TRUE(volume.remove({.at = GetParam().trashElsewhere ? 60 : 20}).killed);
        const auto ended = volume.recover(kill);
        EXPECT_EQ(volume.recover().exitCode, 0);
        EXPECT_EQ(volume.undo().exitCode, 0);
        EXPECT_EQ(volume.changes(), Words()) << ended.hit;
        return ended.hit.empty();
    });
}

TEST_P(Kill, AnUndoCutOffAnywhereIsFinishedByTheNext) {
    sweep("killed undo", [recovers = false](const FaultyVolume& volume, const Fault& kill) mutable {
        EXPECT_EQ(volume.remove().exitCode, 0);
        const auto ended = volume.undo(kill);
        recovers = !recovers;
        if (ended.killed && recovers) {
            EXPECT_EQ(volume.recover().exitCode, 0) << ended.hit;
            EXPECT_EQ(volume.hiddenItems(), Words()) << ended.hit;
        }
        if (ended.killed) volume.undo(); // reports the items already put back
        EXPECT_EQ(volume.changes(), Words()) << ended.hit << ended.output;
        return ended.hit.empty();
    });
}

TEST_P(Kill, APurgeCutOffAnywhereIsFinishedByTheNext) {
    sweep("killed purge", [](const FaultyVolume& volume, const Fault& kill) {
        EXPECT_EQ(volume.remove().exitCode, 0);
        const auto left = volume.itemsLeft();
        const auto ended = volume.purge(kill);
        if (ended.killed) {
            EXPECT_NE(volume.purge().exitCode, 1) << ended.hit; // refused if only its folder was left
        }
        EXPECT_TRUE(volume.isTrashCleared()) << ended.hit;
        EXPECT_EQ(volume.itemsLeft(), left) << ended.hit;
        return ended.hit.empty();
    });
}

INSTANTIATE_TEST_SUITE_P(Disks, Kill, everyDisks(), nameOf);

} // namespace
} // namespace tidwen::test
