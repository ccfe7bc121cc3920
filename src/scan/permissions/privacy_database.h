#pragma once

#include "base/path.h"
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
    unreadable, ///< not a plain file, more than 64 MiB, or refused by the file system
    busy,       ///< within a transaction, or changed while it was read
    malformed,  ///< not a valid SQLite database
};

/// A privacy database ("TCC.db", SQLite) as a copy in memory: no file is locked, followed as a link or
/// written. Its schema is untrusted: views, triggers, virtual tables and functions with side effects are off,
/// and long-running statements end with SQLITE_INTERRUPT.
class PrivacyDatabase {
  public:
    static tl::expected<PrivacyDatabase, PrivacyDatabaseError> open(std::string bytes, bool writable);

    /// For preparing statements; valid for the lifetime of this object.
    sqlite3* handle() const { return handle_.get(); }

    /// The database in its present state, as the bytes of a file.
    tl::expected<std::string, PrivacyDatabaseError> bytes() const;

  private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    PrivacyDatabase() = default;

    // On the heap because SQLite keeps its address; must outlive the handle.
    std::unique_ptr<std::int64_t> stepsLeft_;
    std::unique_ptr<sqlite3, Close> handle_;
    bool usesWriteAheadLog_ = false;
};

/// Reads a database from the disk unless another process is changing it.
tl::expected<PrivacyDatabase, PrivacyDatabaseError>
readPrivacyDatabase(const FileSystem& files, const Path& file, bool writable = false);

} // namespace tidwen
