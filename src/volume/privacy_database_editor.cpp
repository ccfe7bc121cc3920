#include "volume/privacy_database_editor.h"

#include "base/path.h"
#include "posix/patient_lock.h"
#include "scan/permissions/privacy_database.h"

#include <limits>
#include <memory>
#include <sqlite3.h>

namespace tidwen {

namespace {

/// Number of deleted rows; nullopt when there is no table of the known form.
std::optional<int> deleteRows(sqlite3* database, const std::string& client,
                              const std::optional<std::string>& service) {
    constexpr std::size_t longest = std::numeric_limits<int>::max();
    if (client.size() > longest || (service && service->size() > longest)) return std::nullopt;
    const char* query = service ? "DELETE FROM main.access WHERE client = ? AND service = ?"
                                : "DELETE FROM main.access WHERE client = ?";
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database, query, -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared, sqlite3_finalize);
    if (!statement) return std::nullopt;
    sqlite3_bind_text(statement.get(), 1, client.data(), static_cast<int>(client.size()), SQLITE_STATIC);
    if (service)
        sqlite3_bind_text(statement.get(), 2, service->data(), static_cast<int>(service->size()),
                          SQLITE_STATIC);
    if (sqlite3_step(statement.get()) != SQLITE_DONE) return std::nullopt;
    return sqlite3_changes(database);
}

} // namespace

std::optional<Message> deletePermissionRows(FileSystem& files, const Path& database,
                                            const std::string& client,
                                            const std::optional<std::string>& service) {
    const Message failure{"failure.privacyDatabase"};
    const auto refusal = [](const FileError& error) { return Message{std::string(failureKey(error.fault))}; };
    const auto file = files.resolveParent(database);
    if (!file && file.error().fault == FileFault::missing) return std::nullopt;
    if (!file) return failure;
    const auto lock = lockPatiently(files, file->parent());
    if (!lock) return refusal(lock.error());
    const auto opened = readPrivacyDatabase(files, database, true);
    if (!opened && opened.error() == PrivacyDatabaseError::missing) return std::nullopt;
    if (!opened) return failure;
    files.dropUnfinishedReplacement(*file); // even when there are no rows left to delete

    const auto deleted = deleteRows(opened->handle(), client, service);
    if (!deleted) return failure;
    if (*deleted == 0) return std::nullopt;

    const auto bytes = opened->bytes();
    if (!bytes) return failure;
    if (const auto written = files.replaceFile(*file, *bytes, NewFileMode::likeExisting); !written)
        return refusal(written.error());
    return std::nullopt;
}

} // namespace tidwen
