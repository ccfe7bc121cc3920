#include "sample/privacy_database_writer.h"

#include <memory>
#include <sqlite3.h>

namespace tidwen::sample {

namespace {

constexpr const char* schema = R"(
CREATE TABLE admin (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL);
INSERT INTO admin VALUES ('version', 29);
CREATE TABLE policies (id INTEGER NOT NULL PRIMARY KEY, bundle_id TEXT NOT NULL, uuid TEXT NOT NULL,
    display TEXT NOT NULL, UNIQUE (bundle_id, uuid));
CREATE TABLE active_policy (client TEXT NOT NULL, client_type INTEGER NOT NULL, policy_id INTEGER NOT NULL,
    PRIMARY KEY (client, client_type),
    FOREIGN KEY (policy_id) REFERENCES policies(id) ON DELETE CASCADE ON UPDATE CASCADE);
CREATE TABLE access_overrides (service TEXT NOT NULL PRIMARY KEY);
CREATE TABLE expired (service TEXT NOT NULL, client TEXT NOT NULL, client_type INTEGER NOT NULL, csreq BLOB,
    last_modified INTEGER NOT NULL, expired_at INTEGER NOT NULL DEFAULT (CAST(strftime('%s','now') AS INTEGER)),
    PRIMARY KEY (service, client, client_type));
CREATE TABLE access (service TEXT NOT NULL, client TEXT NOT NULL, client_type INTEGER NOT NULL,
    auth_value INTEGER NOT NULL, auth_reason INTEGER NOT NULL, auth_version INTEGER NOT NULL, csreq BLOB,
    policy_id INTEGER, indirect_object_identifier_type INTEGER,
    indirect_object_identifier TEXT NOT NULL DEFAULT 'UNUSED', indirect_object_code_identity BLOB,
    flags INTEGER, last_modified INTEGER NOT NULL DEFAULT (CAST(strftime('%s','now') AS INTEGER)),
    pid INTEGER, pid_version INTEGER, boot_uuid TEXT NOT NULL DEFAULT 'UNUSED',
    last_reminded INTEGER NOT NULL DEFAULT (CAST(strftime('%s','now') AS INTEGER)),
    PRIMARY KEY (service, client, client_type, indirect_object_identifier),
    FOREIGN KEY (policy_id) REFERENCES policies(id) ON DELETE CASCADE ON UPDATE CASCADE);
)";

// Fixed times instead of the clock, because two samples must be identical.
constexpr const char* insertion =
    "INSERT INTO access (service, client, client_type, auth_value, auth_reason, auth_version, flags,"
    " last_modified, last_reminded) VALUES (?, ?, ?, ?, 2, 1, 0, 1730000000, 1730000000)";

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

bool insert(sqlite3* database, const Grant& grant) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(database, insertion, -1, &raw, nullptr) != SQLITE_OK) return false;
    const Statement statement(raw, sqlite3_finalize);
    const std::string service = "kTCCService" + std::string(grant.service);
    const std::string client(grant.client);
    sqlite3_bind_text(raw, 1, service.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(raw, 2, client.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(raw, 3, grant.isPathClient ? 1 : 0);
    sqlite3_bind_int(raw, 4, grant.authValue);
    return sqlite3_step(raw) == SQLITE_DONE;
}

} // namespace

std::string writePrivacyDatabase(const std::vector<Grant>& grants, bool isSystemScope) {
    sqlite3* raw = nullptr;
    const int opened = sqlite3_open(":memory:", &raw);
    const Database database(raw, sqlite3_close);
    if (opened != SQLITE_OK || sqlite3_exec(raw, schema, nullptr, nullptr, nullptr) != SQLITE_OK) return {};
    for (const auto& grant : grants)
        if (grant.isSystemScope == isSystemScope && !insert(raw, grant)) return {};

    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> bytes(
        sqlite3_serialize(raw, "main", &size, 0), sqlite3_free);
    if (!bytes) return {};
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

} // namespace tidwen::sample
