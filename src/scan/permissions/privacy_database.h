#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <memory>
#include <string>
#include <tl/expected.hpp>

struct sqlite3;

namespace tidwen {

/// Why a privacy database could not be opened.
enum class PrivacyDatabaseError {
    missing,    ///< there is no such file
    unreadable, ///< no plain file, more than 64 MiB, or the file system refuses
    busy,       ///< in the middle of a transaction, or changed while it was read
    malformed,  ///< not a database that SQLite takes
};

/// A privacy database ("TCC.db", SQLite) as a copy in memory: nothing on the disk is locked, followed or
/// written. Its schema is not trusted: views, triggers, virtual tables and functions with effects are off,
/// and statements that run too long end with SQLITE_INTERRUPT.
class PrivacyDatabase {
  public:
    static tl::expected<PrivacyDatabase, PrivacyDatabaseError> open(std::string bytes, bool writable);

    /// For preparing statements; valid as long as this object.
    sqlite3* handle() const { return handle_.get(); }

    /// The whole database as it stands now, as bytes of a file.
    tl::expected<std::string, PrivacyDatabaseError> bytes() const;

  private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    PrivacyDatabase() = default;

    // On the heap because SQLite keeps its address; outlives the handle.
    std::unique_ptr<std::int64_t> stepsLeft_;
    std::unique_ptr<sqlite3, Close> handle_;
    bool usesWriteAheadLog_ = false;
};

/// Reads a database from the disk, provided that nobody is changing it.
tl::expected<PrivacyDatabase, PrivacyDatabaseError>
readPrivacyDatabase(const FileSystem& files, const Path& file, bool writable = false);

} // namespace tidwen
