#include "base/path.h"
#include "operations/screened_move.h"
#include "platform/file_system.h"
#include "scan/matching/found_item.h"
#include "scan/policy/path_policy.h"
#include "support/fixtures.h"
#include "support/trees.h"
#include "support/unprivileged.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace tidwen {
namespace {

const std::string trashFolder = "/Users/alice/.Trash/Tidwen - Marlin Notes - 2024-01-01 10-00-00";
const std::string caches = "/Users/alice/Library/Caches/";

class ScreenedMoveTest : public testing::Test {
  protected:
    ScreenedMoveTest() {
        volume.makeFolder(trashFolder);
        volume.makeFolder(caches);
    }
    std::string move(const std::string& source, const std::string& destination) {
        const auto reason = screenedMove({Path(source), Path(destination)}, volume.files(), policy, log);
        return reason ? reason->key : "moved";
    }
    test::TemporaryVolume volume;
    test::RecordingLog log;
    PathPolicy policy{test::alice(), volume.files()};
};

TEST_F(ScreenedMoveTest, MovesIntoQuarantineAndBack) {
    volume.write(caches + "com.example.app/data", "x");
    EXPECT_EQ(move(caches + "com.example.app", trashFolder + "/Marlin Notes/0007/com.example.app"), "moved");
    EXPECT_EQ(volume.read(trashFolder + "/Marlin Notes/0007/com.example.app/data"), "x");
    EXPECT_EQ(move(trashFolder + "/Marlin Notes/0007/com.example.app", caches + "gone/com.example.app"),
              "moved");
    EXPECT_EQ(volume.read(caches + "gone/com.example.app/data"), "x");

    volume.link(caches + "com.example.link", "/nowhere"); // the link itself is the item
    EXPECT_EQ(move(caches + "com.example.link", trashFolder + "/0008/com.example.link"), "moved");
    EXPECT_TRUE(volume.exists(trashFolder + "/0008/com.example.link"));
}

TEST_F(ScreenedMoveTest, AMoveThatCannotBeDoneLeavesBothItems) {
    volume.write(caches + "a", "new");
    volume.write(trashFolder + "/0001/a", "old");
    volume.link(trashFolder + "/0002/a", "/nowhere");
    EXPECT_EQ(move(caches + "a", trashFolder + "/0001/a"), "failure.destinationOccupied");
    EXPECT_EQ(move(caches + "a", trashFolder + "/0002/a"), "failure.destinationOccupied");
    EXPECT_EQ(move(caches + "b", trashFolder + "/0003/b"), failureKey(FileFault::missing));
    EXPECT_NE(move(caches + "a", trashFolder + "/0001/a/b"), "moved");
    EXPECT_EQ(volume.read(caches + "a"), "new");
    EXPECT_EQ(volume.read(trashFolder + "/0001/a"), "old");
    EXPECT_FALSE(volume.exists(trashFolder + "/0003")) << "an empty folder counts as quarantined";
}

TEST_F(ScreenedMoveTest, MovesNothingElseThanWhatWasFound) {
    using enum FoundItem::Part;
    const auto write = [&](const std::string& content) { volume.write(caches + "a", content); };
    const auto renew = [&] {
        volume.write(caches + "new", "old");
        std::filesystem::rename(volume.host(caches + "new"), volume.host(caches + "a"));
    };
    const struct {
        FoundItem::Part part;
        std::function<void()> change;
        const char* result;
    } cases[] = {{content, [] {}, "moved"},
                 {content, [&] { write("longer"); }, changedSinceKey},
                 {content, [&] { write("new"); }, changedSinceKey},
                 {item, [&] { write("longer"); }, "moved"},
                 {item, renew, changedSinceKey},
                 {kind, renew, "moved"}};
    int number = 0;
    for (const auto& each : cases) {
        write("old");
        const FoundItem found(*volume.files().info(Path(caches + "a")), each.part);
        each.change();
        const auto reason =
            screenedMove({Path(caches + "a"), Path(trashFolder) / std::to_string(++number) / "a", found},
                         volume.files(), policy, log);
        EXPECT_EQ(reason ? reason->key : "moved", each.result) << number;
    }
}

TEST_F(ScreenedMoveTest, SaysWhoseItIsThatMayNotBeMoved) {
    volume.write(caches + "shut/a", "x");
    test::giveToUnprivileged(volume.hostRoot());
    std::filesystem::permissions(volume.host(caches + "shut"), std::filesystem::perms(0555));
    test::asUnprivileged(
        [&] { EXPECT_EQ(move(caches + "shut/a", trashFolder + "/0001/a"), "failure.notYours"); });
    volume.write(trashFolder + "/0002/b", "x");
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged(
        [&] { EXPECT_EQ(move(trashFolder + "/0002/b", caches + "shut/b"), "failure.oldFolderProtected"); });
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another account";
    volume.makeFolder("/Library/Caches");
    test::giveToUnprivileged(volume.hostRoot());
    ASSERT_EQ(::chown(volume.host("/Library/Caches").c_str(), 0, 0), 0);
    test::asUnprivileged(
        [&] { EXPECT_EQ(move(trashFolder + "/0002/b", "/Library/Caches/b"), "failure.oldFolderNotYours"); });
}

TEST_F(ScreenedMoveTest, FollowsHarmlessLinksAndNoOthers) {
    volume.link("/Users/alice/Library/Shortcut", "/Library/Caches");
    volume.write("/Library/Caches/com.example.app", "x");
    EXPECT_EQ(move("/Users/alice/Library/Shortcut/com.example.app", trashFolder + "/0001/com.example.app"),
              "moved");

    volume.write("/Users/alice/Documents/thesis", "x");
    volume.link("/Users/alice/Library/Folder", "/Users/alice/Documents");
    volume.link(trashFolder + "/0003", "/Users/alice/Documents");
    const auto before = test::fingerprint(volume.hostRoot());
    const std::pair<std::string, std::string> blocked[] = {
        {"/Users/alice/Library/Folder/thesis", trashFolder + "/0002/thesis"},
        {trashFolder + "/0001/com.example.app", "/Users/alice/Library/Folder/new/app"},
        {"/Library/Caches/com.example.app", trashFolder + "/0003/a"}};
    for (const auto& [source, destination] : blocked)
        EXPECT_EQ(move(source, destination), blockedBySafetyPolicyKey) << source;
    EXPECT_EQ(test::fingerprint(volume.hostRoot()), before);
    EXPECT_TRUE(log.contains("Move blocked by path policy: /"));
}

} // namespace
} // namespace tidwen
