#pragma once

#include "base/descriptor.h"
#include "platform/file_system.h"

#include <dirent.h>
#include <string>
#include <vector>

namespace tidwen {

/// Opens a folder by its name in another one to read its entries; never a link.
Descriptor openFolderToRead(int folder, const char* name);

/// The names in a folder that is open for reading, one after the other, without "." and "..". A descriptor
/// that is not given stays the caller's; only one listing of it at a time.
class FolderListing {
  public:
    explicit FolderListing(int folder);
    /// Of a folder that was just opened for this; takes it over.
    explicit FolderListing(Descriptor folder);
    ~FolderListing();
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;

    /// Valid until the next call; null at the end and after an error.
    const char* next();
    /// Of the entry that `next` gave; `other` may also mean that the disk did not say.
    unsigned char type() const { return entry_->d_type; }
    /// The errno that ended the listing; 0 at its proper end.
    int fault() const { return fault_; }

  private:
    void start(Descriptor own);

    DIR* stream_ = nullptr;
    const dirent* entry_ = nullptr;
    int fault_ = 0;
};

/// All entries of an open folder in the order of their names' bytes.
OsResult<std::vector<DirectoryEntry>> entriesOf(int folder);
/// Of one that was just opened for this.
OsResult<std::vector<DirectoryEntry>> takeEntries(Descriptor folder);

} // namespace tidwen
