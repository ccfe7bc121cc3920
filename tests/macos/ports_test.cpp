#include "base/descriptor.h"
#include "macos/fs_events.h"
#include "macos/launch_services.h"
#include "macos/preferences_defaults.h"
#include "macos/preferred_languages.h"
#include "macos/unified_log.h"
#include "macos/user_keychain.h"
#include "macos/workspace_applications.h"
#include "platform/keychain.h"
#include "platform/system.h"
#include "posix/bulk_entries.h"
#include "posix/entry_sizes.h"
#include "posix/posix_process_runner.h"
#include "support/defaults_contract.h"
#include "support/fixtures.h"
#include "support/folder_events_contract.h"
#include "support/known_applications_contract.h"

#include <cstdint>
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using namespace std::chrono_literals;

TEST(FsEvents, FollowTheFolderAwayAndBack) {
    const test::TemporaryVolume volume;
    FsEvents events(volume.hostRoot());
    test::expectToFollowAFolder(volume, events);
}

TEST(PreferencesDefaults, KeepEveryValueInADomainOfTheTest) {
    const auto domain = fmt::format("com.corvella.tidwen.test.{}", ::getpid());
    test::RecordingLog log;
    test::expectToKeepEveryValue([&] { return std::make_unique<PreferencesDefaults>(domain, log); });
    (void)PosixProcessRunner().run("/usr/bin/defaults", {"delete", domain}, 20s);
}

/// A keychain of the test's own, which is not on the user's search list.
TEST(UserKeychain, CountsAndDeletesTheItemsOfAServiceAndAsksNobody) {
    const test::TemporaryFolder folder;
    const auto file = (folder.path() / "test.keychain-db").string();
    PosixProcessRunner tools;
    const auto security = [&](std::vector<std::string> words) {
        words.push_back(file);
        return tools.run("/usr/bin/security", words, 20s)->exitCode;
    };
    ASSERT_EQ(security({"create-keychain", "-p", "secret"}), 0);
    for (const char* account : {"alice", "bob"})
        ASSERT_EQ(security({"add-generic-password", "-s", "Marlin", "-a", account, "-w", "x"}), 0);
    ASSERT_EQ(security({"add-internet-password", "-s", "marlin.example", "-a", "alice", "-w", "x"}), 0);

    UserKeychain keychain(tools, file);
    auto entries = keychain.entries();
    std::erase_if(entries, [](const KeychainEntry& entry) { return entry.isSystemKeychain; });
    EXPECT_THAT(entries,
                testing::ElementsAre(KeychainEntry{"Marlin", 2}, KeychainEntry{"marlin.example", 1}));
    using enum KeychainItemClass;
    EXPECT_EQ(keychain.deleteItems(genericPassword, "Marlin"), 0);
    EXPECT_EQ(keychain.deleteItems(genericPassword, "Marlin"), keychainItemNotFound);
    ASSERT_EQ(security({"lock-keychain"}), 0);
    EXPECT_NE(keychain.deleteItems(internetPassword, "marlin.example"), keychainItemNotFound) << "no prompt";
    EXPECT_EQ(security({"delete-keychain"}), 0);
}

TEST(WorkspaceApplications, KnowWhoRunsAndWhoIsThere) {
    WorkspaceApplications running;
    test::expectToKnowOnly({"com.apple.Finder", "com.apple.Safari"}, LaunchServices());
    for (const auto& [bundleID, isThere] :
         {std::pair{"com.apple.finder", true}, {"com.corvella.no-such-application", false}}) {
        EXPECT_EQ(running.isRunning(bundleID), isThere) << "needs somebody who is logged in";
    }
    EXPECT_TRUE(running.quit("com.corvella.no-such-application", 1s)) << "none is left";
}

/// Needs somebody who is logged in. Started without coming to the front.
TEST(WorkspaceApplications, QuitWhoAgreesAndEndNobodyByForce) {
    constexpr auto bundleID = "com.corvella.tidwen.test.sitting";
    WorkspaceApplications running;
    PosixProcessRunner tools;
    const auto waitUntilRunning = [&](bool isWanted) {
        for (int i = 0; i < 400 && running.isRunning(bundleID) != isWanted; ++i)
            std::this_thread::sleep_for(100ms);
        return running.isRunning(bundleID) == isWanted;
    };
    for (const bool stays : {false, true}) {
        const std::vector<std::string> words = {"-g", "-n", SITTING_APPLICATION, "--args",
                                                stays ? "stays" : "goes"};
        ASSERT_EQ(tools.run("/usr/bin/open", words, 20s)->exitCode, 0);
        ASSERT_TRUE(waitUntilRunning(true));
        std::this_thread::sleep_for(1s); // it answers once its own loop turns
        EXPECT_EQ(running.quit(bundleID, 3s), !stays);
        EXPECT_EQ(running.isRunning(bundleID), stays);
    }
    EXPECT_TRUE(waitUntilRunning(false)) << "it ends by itself";
}

/// Many entries described by one call are those that stat describes one by one.
TEST(EntrySizes, AreTheSameInBulk) {
    for (const char* place : {"/System/Library/CoreServices", "/Applications", "/usr/lib", "/private/tmp"}) {
        const Descriptor folder(::open(place, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        using Entry =
            std::tuple<std::string, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, bool>;
        std::set<Entry> seen[2];
        for (const bool isBulk : {false, true})
            (isBulk ? listSizes
                    : listSizesSingly)(folder.get(), [&](const char* name, const EntrySize* size) {
                const auto told = size ? *size : EntrySize();
                seen[isBulk].insert(
                    {name, told.device, told.inode, told.links, told.allocatedBytes, told.isFolder});
                return true;
            });
        EXPECT_EQ(seen[0], seen[1]) << place;
    }
}

TEST(System, TellsItsLanguagesAndTakesLines) {
    EXPECT_THAT(preferredLanguages(), testing::Not(testing::IsEmpty()));
    const auto mark = fmt::format("a line of test {}", ::getpid());
    UnifiedLog("com.corvella.tidwen.test").error("{}", mark);
    const auto shown = PosixProcessRunner().run(
        "/usr/bin/log", {"show", "--last", "1m", "--predicate", "subsystem == \"com.corvella.tidwen.test\""},
        60s);
    ASSERT_TRUE(shown);
    EXPECT_THAT(shown->standardOutput, testing::HasSubstr(mark));
}

} // namespace
} // namespace tidwen
