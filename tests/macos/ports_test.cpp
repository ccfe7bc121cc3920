#include "macos/fs_events.h"
#include "macos/launch_services.h"
#include "macos/preferences_defaults.h"
#include "macos/preferred_languages.h"
#include "macos/unified_log.h"
#include "macos/user_keychain.h"
#include "macos/workspace_applications.h"
#include "posix/posix_process_runner.h"
#include "support/defaults_contract.h"
#include "support/fixtures.h"
#include "support/folder_events_contract.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <unistd.h>

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
    const LaunchServices known;
    for (const auto& [bundleID, isThere] :
         {std::pair{"com.apple.finder", true}, {"com.corvella.no-such-application", false}}) {
        EXPECT_EQ(running.isRunning(bundleID), isThere) << "needs somebody who is logged in";
        EXPECT_EQ(known.isKnown(bundleID), isThere);
    }
    EXPECT_TRUE(running.quit("com.corvella.no-such-application", 1s)) << "none is left";
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
