#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/permissions/permission_audit.h"

#include "scan/permissions/privacy_database.h"
#include "support/fixtures.h"
#include "support/sqlite_bytes.h"

#include <filesystem>
#include <fmt/core.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::databaseOf;
using Grant = PermissionGrant;
using State = PermissionGrant::State;
using Scope = PermissionGrant::Scope;

const std::string userFile = "/Users/alice/Library/Application Support/com.apple.TCC/TCC.db";
const std::string systemFile = "/Library/Application Support/com.apple.TCC/TCC.db";

// As macOS 14 and later create it.
const std::string schema = R"(CREATE TABLE access (service TEXT NOT NULL, client TEXT NOT NULL,
    client_type INTEGER NOT NULL, auth_value INTEGER NOT NULL, auth_reason INTEGER NOT NULL DEFAULT 2,
    auth_version INTEGER NOT NULL DEFAULT 1, csreq BLOB, policy_id INTEGER, indirect_object_identifier_type INTEGER,
    indirect_object_identifier TEXT NOT NULL DEFAULT 'UNUSED', indirect_object_code_identity BLOB, flags INTEGER,
    last_modified INTEGER NOT NULL DEFAULT 0, pid INTEGER, pid_version INTEGER, boot_uuid TEXT NOT NULL
    DEFAULT 'UNUSED', last_reminded INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (service, client, client_type, indirect_object_identifier));)";

std::string row(const std::string& service, const std::string& client, int authValue,
                const char* object = "-") {
    return fmt::format(
        "INSERT INTO access (service, client, client_type, auth_value, indirect_object_identifier) "
        "VALUES ('kTCCService{}', '{}', {}, {}, '{}');",
        service, client, client.starts_with('/') ? 1 : 0, authValue, object);
}

int run(const PrivacyDatabase& on, const char* statement) {
    return sqlite3_exec(on.handle(), statement, nullptr, nullptr, nullptr);
}

class Audit : public testing::Test {
  protected:
    PermissionAudit::Result audit() const {
        const PermissionAudit audit(volume.files(), user, texts);
        return audit.audit("com.example.app", Path("/Applications/./Foo.app/"));
    }
    test::TemporaryVolume volume;
    const UserEnvironment user = test::alice();
    Texts texts; // every title is its key
};

TEST_F(Audit, FoldsTheRowsOfAServiceAndSortsByTitle) {
    const std::string id = "com.example.app", path = "/Applications/Foo.app";
    volume.write(userFile,
                 databaseOf(schema + row("Camera", id, 0) + row("Camera", path, 2) + row("Photos", id, 3)
                            + row("Photos", path, 3) + row("AppleEvents", id, 1, "com.example.x")
                            + row("Reminders", id, 1) + row("AppleEvents", id, 0, "com.example.y")
                            + row("Motion", "COM.EXAMPLE.APP", 2)));
    volume.write(systemFile, databaseOf(schema + row("Camera", id, 5) + row("BrandNew", path, 7)
                                        + row("Motion", path + "/Contents/MacOS/Foo", 2)));
    const std::vector<Grant> expected = {
        {"kTCCServiceBrandNew", {State::Kind::unknown, 7}, Scope::system, true}, // "BrandNew"
        {"kTCCServiceAppleEvents", {State::Kind::denied}, Scope::user, false},   // "permission.automation"
        {"kTCCServiceCamera", {State::Kind::granted}, Scope::user, true},
        {"kTCCServiceCamera", {State::Kind::granted}, Scope::system, false},
        {"kTCCServicePhotos", {State::Kind::limited}, Scope::user, false, true},
        {"kTCCServiceReminders", {State::Kind::unknown, 1}, Scope::user, false},
    };
    const auto result = audit();
    EXPECT_EQ(result.grants, expected);
    EXPECT_TRUE(result.unreadable.empty());
}

TEST_F(Audit, NoDatabaseIsNoProblem) {
    EXPECT_EQ(audit(), PermissionAudit::Result{});
    volume.write("/Library/Application Support/com.apple.TCC", "a file where the folder should be");
    volume.write(userFile, databaseOf("CREATE TABLE access (service, client, client_type, auth_value);"
                                      "INSERT INTO access VALUES (NULL, 'com.example.app', 0, 2);"));
    EXPECT_EQ(audit(), PermissionAudit::Result{});
}

TEST_F(Audit, WhatCannotBeTrustedIsUnreadable) {
    const auto good = databaseOf(schema + row("Camera", "com.example.app", 2));
    std::string manyServices = schema, manyTables = schema;
    for (int i = 0; i < 3'000; ++i) {
        manyServices += row(fmt::format("s{}", i), "com.example.app", 2);
        manyTables += fmt::format("CREATE TABLE t{} (x);", i);
    }
    const std::pair<const char*, std::string> contents[] = {
        {"empty", ""},
        {"older schema",
         databaseOf("CREATE TABLE access (service, client, client_type, allowed, prompt_count);")},
        {"a view",
         databaseOf(
             "CREATE VIEW access AS SELECT 'kTCCServiceCamera' AS service, 'com.example.app' AS client, "
             "0 AS client_type, 2 AS auth_value;")},
        {"a virtual table",
         databaseOf("CREATE VIRTUAL TABLE access USING fts5(service, client, client_type, auth_value);")},
        {"more services than exist", databaseOf(manyServices)},
        {"more tables than can be read in time", databaseOf(manyTables)},
    };
    volume.makeFolder(userFile);
    EXPECT_EQ(audit().unreadable, std::vector{Scope::user});
    std::filesystem::remove(volume.host(userFile));
    for (const auto& [why, bytes] : contents) {
        volume.write(userFile, bytes);
        EXPECT_EQ(audit(), (PermissionAudit::Result{{}, {Scope::user}})) << why;
    }

    volume.write(systemFile, good);
    volume.write(userFile, good);
    EXPECT_EQ(audit().grants.size(), 2u);
    for (const char* suffix : {"-journal", "-wal"}) {
        volume.write(userFile + suffix, "");
        EXPECT_TRUE(audit().unreadable.empty()) << suffix;
        volume.write(userFile + suffix, "unfinished");
        EXPECT_EQ(audit().unreadable, std::vector{Scope::user}) << suffix;
        std::filesystem::remove(volume.host(userFile + suffix));
    }

    std::filesystem::resize_file(volume.host(userFile), (64u << 20) + 1);
    EXPECT_EQ(audit().unreadable, std::vector{Scope::user});
    std::filesystem::remove(volume.host(userFile));
    volume.link(userFile, systemFile);
    EXPECT_EQ(audit().unreadable, std::vector{Scope::user});
}

TEST(PrivacyDatabase, HostileContentHasNoEffect) {
    auto bytes =
        databaseOf(schema + row("Camera", "com.example.app", 2)
                   + "CREATE TABLE loot (x UNIQUE); INSERT INTO loot VALUES (1); CREATE TRIGGER t AFTER "
                     "DELETE ON access BEGIN INSERT INTO loot VALUES (1); END;");
    bytes[18] = bytes[19] = 2; // a write-ahead log
    const auto readable = PrivacyDatabase::open(bytes, false);
    ASSERT_TRUE(readable);
    EXPECT_EQ(run(*readable, "DELETE FROM access"), SQLITE_READONLY);
    EXPECT_EQ(run(*readable,
                  "WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n) SELECT max(x) FROM n"),
              SQLITE_INTERRUPT);

    const auto writable = PrivacyDatabase::open(bytes, true);
    ASSERT_TRUE(writable);
    EXPECT_EQ(writable->bytes(), bytes);
    EXPECT_NE(run(*writable, "ATTACH '/tmp/x' AS other"), SQLITE_OK);
    EXPECT_EQ(run(*writable, "DELETE FROM access"), SQLITE_OK); // the trigger would make it fail
    EXPECT_EQ(writable->bytes()->substr(18, 2), "\x02\x02");
}

} // namespace
} // namespace tidwen
