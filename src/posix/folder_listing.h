#pragma once

#include "base/descriptor.h"
#include "platform/file_system.h"

#include <cstddef>
#include <dirent.h>
#include <string>
#include <vector>

namespace tidwen {

/// Opens an entry of a folder to list it; never follows a link.
Descriptor openFolderToRead(int folder, const char* name);

/// Iterates over the names in a folder open for reading, without "." and "..". A descriptor passed by
/// reference stays the caller's; only one listing of it at a time.
class FolderListing {
  public:
    explicit FolderListing(int folder);
    /// Takes ownership of a folder opened for this.
    explicit FolderListing(Descriptor folder);
    ~FolderListing();
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;

    /// Valid until the next call; null at the end and after an error.
    const char* next();
    /// Of the entry last returned; `other` may also mean that the file system did not say.
    unsigned char type() const { return entry_->d_type; }
    /// The errno that ended the listing; 0 at its regular end.
    int fault() const { return fault_; }

  private:
#ifdef __linux__
    // A stream of the C library would take three more calls and an allocation, of each of thousands of
    // folders.
    Descriptor own_; ///< closed when it was passed by reference
    int folder_;
    alignas(dirent64) char buffer_[32u << 10]; ///< entries as the kernel returns them
    std::size_t filled_ = 0, at_ = 0;
    const dirent64* entry_ = nullptr;
#else
    void start(Descriptor own);

    DIR* stream_ = nullptr;
    const dirent* entry_ = nullptr;
#endif
    int fault_ = 0;
};

/// All entries of an open folder, sorted by the bytes of their names.
OsResult<std::vector<DirectoryEntry>> entriesOf(int folder);
/// The same for a folder opened for this.
OsResult<std::vector<DirectoryEntry>> takeEntries(Descriptor folder);

} // namespace tidwen
