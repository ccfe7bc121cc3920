#include "base/message.h"
#include "base/path.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "scan/policy/path_policy.h"
#include "volume/volume_runner.h"

#include "support/fixtures.h"
#include "support/sqlite_bytes.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace tidwen {
namespace {

namespace fs = std::filesystem;

const std::string systemDatabase = "/Library/Application Support/com.apple.TCC/TCC.db";
const std::string userDatabase = "/Users/alice" + systemDatabase;

constexpr const char* rows =
    "INSERT INTO access VALUES ('kTCCServiceCamera', 'com.example.notes', 0, 2);"
    "INSERT INTO access VALUES ('kTCCServiceAppleEvents', 'com.example.notes', 0, 2);"
    "INSERT INTO access VALUES ('kTCCServiceCamera', 'com.example.notes.pro', 0, 2);"
    "INSERT INTO access VALUES ('kTCCServiceCamera', 'COM.example.notes', 0, 2);";
constexpr const char* table =
    "CREATE TABLE access (service TEXT NOT NULL, client TEXT NOT NULL, client_type INTEGER,"
    " auth_value INTEGER);";

/// The numeric result of a query, on a database that also passes a full check.
int ask(const fs::path& file, const std::string& query) {
    sqlite3* opened = nullptr;
    sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    int answer = -1;
    const auto keep = [](void* place, int, char** values, char**) {
        *static_cast<int*>(place) = std::stoi(values[0]);
        return 0;
    };
    const auto whole = "SELECT (" + query
                       + ") FROM (SELECT 1) WHERE (SELECT integrity_check FROM"
                         " pragma_integrity_check) = 'ok'";
    EXPECT_EQ(sqlite3_exec(opened, whole.c_str(), keep, &answer, nullptr), SQLITE_OK)
        << sqlite3_errmsg(opened);
    return answer;
}

ino_t inode(const fs::path& file) {
    struct stat info {};
    return ::stat(file.c_str(), &info) == 0 ? info.st_ino : 0;
}

class VolumeRunnerTest : public testing::Test {
  protected:
    OperationResult run(RemovalOperation::Kind kind) {
        VolumeRunner runner(volume_.files(), test::alice(), log_);
        RemovalOperation operation;
        operation.id = 7;
        operation.kind = std::move(kind);
        const auto results = runner.run({operation});
        EXPECT_EQ(results.size(), 1u);
        EXPECT_EQ(results.front().operationID, 7);
        return results.front();
    }
    std::string failureOf(RemovalOperation::Kind kind) {
        const auto result = run(std::move(kind));
        EXPECT_EQ(result.succeeded, !result.failureReason);
        return result.failureReason.value_or(Message{"none"}).key;
    }
    std::string reset() { return failureOf(operation::ResetPermissions{"com.example.notes"}); }

    test::TemporaryVolume volume_;
    test::RecordingLog log_;
};

TEST_F(VolumeRunnerTest, WhatOnlyARunningMacHasIsDoneAsItStands) {
    EXPECT_EQ(failureOf(operation::QuitApplication{"com.example.notes"}), "none");
    EXPECT_EQ(failureOf(operation::Bootout{"com.example.agent", true}), "none");
    EXPECT_EQ(failureOf(operation::Bootstrap{Path("/Library/LaunchAgents/a.plist"), false}), "none");
    EXPECT_EQ(failureOf(operation::UnregisterApp{Path("/Applications/Notes.app")}), "none");
    EXPECT_EQ(failureOf(operation::FlushPreferences{}), "none");
    EXPECT_EQ(failureOf(operation::DeleteKeychainItem{"Notes", false}), "failure.needsRunningMac");
}

TEST_F(VolumeRunnerTest, MovesAreScreened) {
    const Path cache("/Users/alice/Library/Caches/com.example.notes");
    const Path quarantined("/Users/alice/.Trash/Tidwen - Notes/1/com.example.notes");
    volume_.write(cache.string() + "/db", "content");
    volume_.makeFolder("/Users/alice/Documents");
    volume_.makeFolder("/Users/alice/.Trash/Tidwen - Notes");
    EXPECT_EQ(failureOf(operation::Move{Path("/Users/alice/Documents"), quarantined}),
              blockedBySafetyPolicyKey);
    EXPECT_EQ(failureOf(operation::Move{cache, quarantined}), "none");
    EXPECT_EQ(volume_.read(quarantined.string() + "/db"), "content");
}

TEST_F(VolumeRunnerTest, PermissionsAreResetInBothDatabases) {
    EXPECT_EQ(reset(), "none") << "no database, nothing to reset";
    auto logged = test::databaseOf(std::string(table) + rows);
    logged[18] = logged[19] = 2; // uses a write-ahead log, which is now empty
    volume_.write(userDatabase, test::databaseOf(std::string(table) + rows));
    volume_.write(systemDatabase, logged);
    ASSERT_EQ(::chmod(volume_.host(systemDatabase).c_str(), 0640), 0);

    EXPECT_EQ(reset(), "none");
    for (const auto& database : {userDatabase, systemDatabase}) {
        const auto file = volume_.host(database);
        EXPECT_EQ(ask(file, "SELECT count(*) FROM access"), 2);
        EXPECT_EQ(ask(file, "SELECT count(*) FROM access WHERE client = 'com.example.notes'"), 0);
    }
    EXPECT_EQ(fs::status(volume_.host(systemDatabase)).permissions(), fs::perms(0640));
    EXPECT_EQ(volume_.read(systemDatabase)[18], 2);

    const auto before = inode(volume_.host(userDatabase));
    const auto leftByAKill = Path(userDatabase).parent() / ".tidwen-new-TCC.db";
    volume_.write(leftByAKill.string(), "half of it");
    EXPECT_EQ(reset(), "none");
    EXPECT_FALSE(volume_.exists(leftByAKill.string()));
    EXPECT_EQ(inode(volume_.host(userDatabase)), before) << "without matching rows the file is not written";
}

TEST_F(VolumeRunnerTest, OneUnusableDatabaseFailsTheResetAndKeepsItsBytes) {
    const auto sound = test::databaseOf(std::string(table) + rows);
    const std::string noTable = "CREATE TABLE admin (key TEXT, value INTEGER);";
    const std::pair<const char*, std::string> cases[] = {
        {"no database", std::string(4096, 'x')},
        {"cut off", sound.substr(0, 600)},
        {"another table", test::databaseOf(noTable)},
        {"a view of that name",
         test::databaseOf(noTable + "CREATE VIEW access AS SELECT key AS client FROM admin;")},
        {"changes not yet in it", sound},
    };
    for (const auto& [why, database] : cases) {
        SCOPED_TRACE(why);
        volume_.write(systemDatabase, sound);
        volume_.write(userDatabase, database);
        if (database == sound) volume_.write(userDatabase + "-wal", "pending");
        const auto before = inode(volume_.host(userDatabase));
        EXPECT_EQ(reset(), "failure.privacyDatabase");
        EXPECT_EQ(volume_.read(userDatabase), database);
        EXPECT_EQ(inode(volume_.host(userDatabase)), before);
        EXPECT_EQ(ask(volume_.host(systemDatabase), "SELECT count(*) FROM access"), 2)
            << "the other is reset";
    }
}

TEST_F(VolumeRunnerTest, AnOlderSchemaIsEditedToo) {
    volume_.write(
        userDatabase,
        test::databaseOf(
            "CREATE TABLE access (service TEXT, client TEXT, client_type INTEGER, allowed INTEGER,"
            " prompt_count INTEGER, csreq BLOB, policy_id INTEGER,"
            " PRIMARY KEY (service, client, client_type));"
            "INSERT INTO access VALUES ('kTCCServiceCamera', 'com.example.notes', 0, 1, 1, NULL, NULL)"));
    EXPECT_EQ(reset(), "none");
    EXPECT_EQ(ask(volume_.host(userDatabase), "SELECT count(*) FROM access"), 0);
}

} // namespace
} // namespace tidwen
