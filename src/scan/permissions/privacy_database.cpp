#include "scan/permissions/privacy_database.h"

#include "base/path.h"

#include <cstring>
#include <sqlite3.h>

namespace tidwen {
namespace {

constexpr std::size_t maximumBytes = 64u << 20;

// Real databases have some hundred rows. Reading 64 MiB of them takes less than half of this.
constexpr std::int64_t stepBudget = 50'000'000;
constexpr int stepsPerCheck = 1'000;

// Enough for hundreds of tables where a real database has ten; the cost grows with the square of their
// number.
constexpr std::int64_t schemaStepBudget = 20'000;

// Offsets of the file's write and read version; 2 means a write-ahead log.
constexpr std::size_t writeVersionOffset = 18;
constexpr std::size_t readVersionOffset = 19;
constexpr std::size_t headerSize = 100;
constexpr char rollbackJournal = 1;
constexpr char writeAheadLog = 2;

using Error = PrivacyDatabaseError;

int spendSteps(void* stepsLeft) {
    auto& left = *static_cast<std::int64_t*>(stepsLeft);
    left -= stepsPerCheck;
    return left < 0 ? 1 : 0;
}

void distrustSchema(sqlite3* database) {
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    // Without modules no virtual table can be opened, so none of their code runs on hostile data.
    sqlite3_drop_modules(database, nullptr);

    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 1 << 20);
    sqlite3_limit(database, SQLITE_LIMIT_SQL_LENGTH, 64 << 10);
    sqlite3_limit(database, SQLITE_LIMIT_COLUMN, 100);
    sqlite3_limit(database, SQLITE_LIMIT_EXPR_DEPTH, 20);
    sqlite3_limit(database, SQLITE_LIMIT_COMPOUND_SELECT, 3);
    sqlite3_limit(database, SQLITE_LIMIT_VDBE_OP, 25'000);
    sqlite3_limit(database, SQLITE_LIMIT_FUNCTION_ARG, 8);
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(database, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100);
    sqlite3_limit(database, SQLITE_LIMIT_VARIABLE_NUMBER, 10);
    sqlite3_limit(database, SQLITE_LIMIT_TRIGGER_DEPTH, 1);
}

bool run(sqlite3* database, const char* statement) {
    return sqlite3_exec(database, statement, nullptr, nullptr, nullptr) == SQLITE_OK;
}

/// A file with content beside the database: an unfinished transaction, or changes not yet in it.
bool hasContent(const FileSystem& files, const Path& file) {
    const auto info = files.info(file);
    if (!info) return info.error().fault != FileFault::missing;
    return info->kind != FileKind::regular || info->size > 0;
}

bool isUnchanged(const FileInfo& before, const FileInfo& after) {
    return before.size == after.size && before.modifiedNanoseconds == after.modifiedNanoseconds
           && before.device == after.device && before.inode == after.inode;
}

} // namespace

void PrivacyDatabase::Close::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

tl::expected<PrivacyDatabase, Error> PrivacyDatabase::open(std::string bytes, bool writable) {
    // SQLite accepts an empty file as a new database; macOS never leaves one.
    if (bytes.size() < headerSize || bytes.size() > maximumBytes) return tl::unexpected(Error::malformed);

    PrivacyDatabase opened;
    // A database in memory cannot have a log. The reader has checked the contents of the log.
    opened.usesWriteAheadLog_ = bytes[readVersionOffset] == writeAheadLog;
    if (opened.usesWriteAheadLog_) bytes[writeVersionOffset] = bytes[readVersionOffset] = rollbackJournal;

    sqlite3* handle = nullptr;
    const int status = sqlite3_open_v2(":memory:", &handle, SQLITE_OPEN_READWRITE, nullptr);
    opened.handle_.reset(handle);
    if (status != SQLITE_OK) return tl::unexpected(Error::unreadable);

    const auto size = static_cast<sqlite3_int64>(bytes.size());
    auto* copy = static_cast<unsigned char*>(sqlite3_malloc64(bytes.size()));
    if (!copy) return tl::unexpected(Error::unreadable);
    std::memcpy(copy, bytes.data(), bytes.size());
    const unsigned flags = SQLITE_DESERIALIZE_FREEONCLOSE
                           | (writable ? SQLITE_DESERIALIZE_RESIZEABLE : SQLITE_DESERIALIZE_READONLY);
    if (sqlite3_deserialize(handle, "main", copy, size, size, flags) != SQLITE_OK) // frees the copy
        return tl::unexpected(Error::malformed);

    distrustSchema(handle);
    opened.stepsLeft_ = std::make_unique<std::int64_t>(schemaStepBudget);
    sqlite3_progress_handler(handle, stepsPerCheck, spendSteps, opened.stepsLeft_.get());
    // The second statement makes SQLite read the header and the schema.
    if (!run(handle, "PRAGMA cell_size_check = ON") || !run(handle, "SELECT count(*) FROM sqlite_schema"))
        return tl::unexpected(Error::malformed);
    *opened.stepsLeft_ = stepBudget;
    return opened;
}

tl::expected<std::string, Error> PrivacyDatabase::bytes() const {
    sqlite3_int64 size = 0;
    // Not copied: owned by SQLite and valid until the next statement.
    const auto* content = sqlite3_serialize(handle(), "main", &size, SQLITE_SERIALIZE_NOCOPY);
    if (!content || size < static_cast<sqlite3_int64>(headerSize)) return tl::unexpected(Error::malformed);
    std::string bytes(reinterpret_cast<const char*>(content), static_cast<std::size_t>(size));
    if (usesWriteAheadLog_) bytes[writeVersionOffset] = bytes[readVersionOffset] = writeAheadLog;
    return bytes;
}

tl::expected<PrivacyDatabase, Error> readPrivacyDatabase(const FileSystem& files, const Path& file,
                                                         bool writable) {
    if (const auto target = files.infoFollowingLinks(file); !target) {
        const auto fault = target.error().fault;
        const bool isMissing = fault == FileFault::missing || fault == FileFault::notDirectory;
        return tl::unexpected(isMissing ? Error::missing : Error::unreadable);
    }
    const auto before = files.info(file);
    // macOS creates no links here; an unfinished transaction would be beside the link's target.
    if (!before || before->kind != FileKind::regular) return tl::unexpected(Error::unreadable);
    auto bytes = files.read(file, maximumBytes);
    if (!bytes) return tl::unexpected(Error::unreadable);

    for (const char* suffix : {"-journal", "-wal"})
        if (hasContent(files, Path(file.string() + suffix))) return tl::unexpected(Error::busy);
    const auto after = files.info(file);
    if (!after || !isUnchanged(*before, *after) || bytes->size() != after->size)
        return tl::unexpected(Error::busy);
    return PrivacyDatabase::open(std::move(*bytes), writable);
}

} // namespace tidwen
