#include "base/path.h"
#include "platform/file_system.h"
#include "posix/moved_items.h"
#include "support/small_disk.h"
#include "support/temporary_folder.h"
#include "support/trees.h"
#include "support/unprivileged.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tidwen::test {
namespace {

/// Recovery from every state that a crash, or another process after it, can leave. Each of the four places is
/// empty or a folder with these letters as files: the original, its copy, the one set aside, the destination.
TEST(SettleInterruptedMove, RemovesOnlyWhatIsSafeElsewhere) {
    const struct {
        std::string what, original, copy, aside, destination;
        std::string result, thenOriginal, thenCopy, thenAside, thenDestination;
        std::string thenBeside = {}; ///< the original, under a visible name
    } cases[] = {
        {"nothing began", "ab", "", "", "", "ok", "ab", "", "", ""},
        {"all is done", "", "", "", "ab", "ok", "", "", "", "ab"},
        {"copying", "ab", "a", "", "", "ok", "ab", "", "", ""},
        {"copying, and somebody took the destination", "ab", "a", "", "x", "ok", "ab", "", "", "x"},
        {"set aside", "", "ab", "ab", "", "ok", "", "", "", "ab"},
        {"in place", "", "", "ab", "ab", "ok", "", "", "", "ab"},
        {"half removed", "", "", "b", "ab", "ok", "", "", "", "ab"},
        {"the copy is not whole", "", "a", "ab", "", "ok", "ab", "", "", ""},
        {"the copy has other content", "", "aB", "ab", "", "ok", "ab", "", "", ""},
        {"the copy is gone", "", "", "ab", "", "ok", "ab", "", "", ""},
        {"somebody took the destination", "", "ab", "ab", "x", "ok", "ab", "", "", "x"},
        {"the original came anew, copied", "x", "ab", "ab", "", "ok", "x", "", "", "ab"},
        {"the original came anew, done", "x", "", "ab", "ab", "ok", "x", "", "", "ab"},
        {"the original came anew, half copied", "x", "a", "ab", "", "exists", "x", "", "", "", "ab"},
        {"written meanwhile", "", "", "bn", "ab", "remains", "", "", "bn", "ab"},
        {"the original came anew, written meanwhile", "x", "", "bn", "ab", "remains", "x", "", "bn", "ab"},
        {"remains of an earlier move", "x", "", "bn", "", "ok", "x", "", "bn", ""},
        {"all four", "x", "ab", "ab", "y", "exists", "x", "", "", "y", "ab"},
        {"only a copy", "", "ab", "", "", "missing", "", "ab", "", ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const TemporaryVolume volume;
        const std::string places[] = {"/from/x", "/to/.tidwen-copy-x", "/from/.tidwen-moved-x", "/to/x",
                                      "/from/x 2"};
        const std::string given[] = {each.original, each.copy, each.aside, each.destination};
        const std::string wanted[] = {each.thenOriginal, each.thenCopy, each.thenAside, each.thenDestination,
                                      each.thenBeside};
        volume.makeFolder("/from");
        volume.makeFolder("/to");
        for (std::size_t i = 0; i < 4; ++i) {
            for (const char letter : given[i]) {
                const std::string file = places[i] + "/" + static_cast<char>(letter | 0x20);
                volume.write(file, std::string(3, letter));
                age(volume.host(file), 1);
            }
            age(volume.host(places[i]), 7);
        }
        const auto files = openVolume(volume.hostRoot());
        EXPECT_EQ(files->isSetAside(Path("/from/x")), !each.aside.empty());
        const auto settled = files->settleInterruptedMove(Path("/from/x"), Path("/to/x"));
        EXPECT_EQ(settled && *settled ? "remains" : outcome(settled), each.result);
        for (std::size_t i = 0; i < 5; ++i) {
            std::string letters;
            if (volume.exists(places[i]))
                for (const auto& name : namesIn(volume.host(places[i])))
                    letters += name;
            EXPECT_EQ(letters, wanted[i]) << places[i];
            EXPECT_EQ(volume.exists(places[i]), !wanted[i].empty()) << places[i];
        }
    }
}

/// Two moves of one place to different destinations were cut off.
TEST(SettleInterruptedMove, TakesOneOriginalForItsCopy) {
    const TemporaryVolume volume;
    for (const std::string item : {"/from/.tidwen-moved-x", "/from/.tidwen-moved2-x", "/to/.tidwen-copy-x"}) {
        volume.write(item + "/a", "a");
        if (!item.ends_with("2-x")) volume.write(item + "/b", "b");
        for (const auto* name : {"/a", "/b", ""})
            if (volume.exists(item + name)) age(volume.host(item + name), 1);
    }
    (void)openVolume(volume.hostRoot())->settleInterruptedMove(Path("/from/x"), Path("/to/x"));
    EXPECT_EQ(namesIn(volume.host("/from")), std::vector<std::string>{".tidwen-moved2-x"});
    EXPECT_EQ(namesIn(volume.host("/to/x")), (std::vector<std::string>{"a", "b"}));
}

/// The rest of what has arrived is no item: nothing gives it the item's name.
TEST(SettleInterruptedMove, RemovesTheRestOfWhatArrivedIfItIsSafeElsewhere) {
    for (const bool isSafe : {true, false}) {
        const TemporaryVolume volume;
        const std::string rest = "/from/.tidwen-arrived2-x", place = isSafe ? "/to/x" : "/from/x";
        volume.write("/to/x/a", "a");
        volume.write(rest + "/b", "b");
        volume.write(place + "/b", "b");
        for (const auto& item : {rest, place})
            age(volume.host(item + "/b"), 1);
        const auto files = openVolume(volume.hostRoot());
        EXPECT_FALSE(files->isSetAside(Path("/from/x")));
        const auto settled = files->settleInterruptedMove(Path("/from/x"), Path("/to/x"));
        const MoveRemains remains{Path(rest), FileFault::busy};
        EXPECT_EQ(settled.value(), isSafe ? std::nullopt : std::optional(remains));
        EXPECT_EQ(files->revealRemains(Path("/from/x")), std::vector<Path>());
        EXPECT_EQ(volume.exists(rest), !isSafe);
    }
}

/// A removal makes a folder writable before it empties it, and can be cut off in between.
TEST(SettleInterruptedMove, KnowsTheFoldersThatARemovalUnlocked) {
    const struct {
        fs::perms copied, left;
        const char* result;
    } cases[] = {{fs::perms(0555), fs::perms(0755), "ok"},
                 {fs::perms(0500), fs::perms(0500), "ok"},
                 {fs::perms(0555), fs::perms(0775), "remains"},
                 {fs::perms(0755), fs::perms(0555), "remains"}};
    for (const auto& each : cases)
        for (const std::string folder : {"", "/inner"}) {
            const TemporaryVolume volume;
            const std::string aside = "/from/.tidwen-moved-x", copy = "/to/x";
            volume.write(copy + "/inner/gone", "");
            volume.makeFolder(aside + "/inner");
            fs::permissions(volume.host(copy + folder), each.copied);
            fs::permissions(volume.host(aside + folder), each.left);
            const auto settled =
                openVolume(volume.hostRoot())->settleInterruptedMove(Path("/from/x"), Path(copy));
            EXPECT_EQ(settled && *settled ? "remains" : outcome(settled), each.result) << folder;
            for (const auto& place : {copy, aside}) // so that the volume can be removed
                if (volume.exists(place)) fs::permissions(volume.host(place + folder), fs::perms(0755));
        }
}

TEST(SettleInterruptedMove, FinishesARenameByHardLink) {
    const TemporaryVolume volume;
    volume.write("/from/x", "content");
    volume.makeFolder("/to");
    fs::create_hard_link(volume.host("/from/x"), volume.host("/to/x"));
    EXPECT_EQ(outcome(openVolume(volume.hostRoot())->settleInterruptedMove(Path("/from/x"), Path("/to/x"))),
              "ok");
    EXPECT_FALSE(volume.exists("/from/x"));
    EXPECT_EQ(volume.read("/to/x"), "content");
}

/// The same within one of the two folders, for the rename to or from the intermediate name.
TEST(SettleInterruptedMove, FinishesItsOwnRenamesByHardLink) {
    const TemporaryVolume volume;
    volume.write("/from/x", "content");
    volume.write("/to/x", "content");
    fs::create_hard_link(volume.host("/from/x"), volume.host("/from/.tidwen-moved-x"));
    fs::create_hard_link(volume.host("/to/x"), volume.host("/to/.tidwen-copy-x"));
    volume.write("/from/.tidwen-arrived-y", "y");
    fs::create_hard_link(volume.host("/from/.tidwen-arrived-y"), volume.host("/from/.tidwen-moved-y"));
    for (const std::string name : {"x", "y"})
        (void)openVolume(volume.hostRoot())
            ->settleInterruptedMove(Path("/from/" + name), Path("/to/" + name));
    EXPECT_FALSE(volume.exists("/from/.tidwen-moved-y"));
    fs::remove(volume.host("/from/.tidwen-arrived-y"));
    EXPECT_EQ(namesIn(volume.host("/from")), std::vector<std::string>{"x"});
    EXPECT_EQ(namesIn(volume.host("/to")), std::vector<std::string>{"x"});
}

} // namespace
} // namespace tidwen::test
