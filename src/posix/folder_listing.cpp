#include "posix/folder_listing.h"

#include "posix/item_description.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

FileKind kindOfEntry(int folder, const char* name, unsigned char type) {
    switch (type) {
    case DT_REG:
        return FileKind::regular;
    case DT_DIR:
        return FileKind::directory;
    case DT_LNK:
        return FileKind::symbolicLink;
    case DT_UNKNOWN:
        break;
    default:
        return FileKind::other;
    }
    const auto item = statItem(folder, name);
    return item ? kindOf(item->st_mode) : FileKind::other;
}

OsResult<std::vector<DirectoryEntry>> entriesIn(FolderListing& listing, int folder) {
    std::vector<DirectoryEntry> entries;
    while (const char* name = listing.next())
        entries.push_back({.name = name, .kind = kindOfEntry(folder, name, listing.type())});
    if (listing.fault()) return tl::unexpected(listing.fault());
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return entries;
}

} // namespace

Descriptor openFolderToRead(int folder, const char* name) {
    return Descriptor(retryOnEintr([&] {
        return ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
}

FolderListing::FolderListing(int folder) {
    // A stream owns its descriptor, so it gets a duplicate. Both share one position, which another listing
    // may have left at the end.
    start(Descriptor(::fcntl(folder, F_DUPFD_CLOEXEC, 0)));
    if (stream_) ::rewinddir(stream_);
}

FolderListing::FolderListing(Descriptor folder) {
    start(std::move(folder));
}

void FolderListing::start(Descriptor own) {
    if (own.isOpen()) stream_ = ::fdopendir(own.get());
    if (stream_)
        own.release();
    else
        fault_ = errno;
}

FolderListing::~FolderListing() {
    if (stream_) ::closedir(stream_);
}

const char* FolderListing::next() {
    while (stream_) {
        errno = 0;
        entry_ = ::readdir(stream_); // NOLINT(concurrency-mt-unsafe): the stream is this listing's alone
        if (!entry_) {
            fault_ = errno;
            return nullptr;
        }
        const std::string_view name = entry_->d_name;
        if (name != "." && name != "..") return entry_->d_name;
    }
    return nullptr;
}

OsResult<std::vector<DirectoryEntry>> entriesOf(int folder) {
    FolderListing listing(folder);
    return entriesIn(listing, folder);
}

OsResult<std::vector<DirectoryEntry>> takeEntries(Descriptor folder) {
    const int number = folder.get();
    FolderListing listing(std::move(folder));
    return entriesIn(listing, number);
}

} // namespace tidwen
