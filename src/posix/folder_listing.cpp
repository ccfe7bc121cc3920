#include "posix/folder_listing.h"

#include "posix/item_description.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <tl/expected.hpp>
#include <unistd.h>
#include <utility>

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

bool isItem(std::string_view name) {
    return name != "." && name != "..";
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

#ifdef __linux__

// Another listing of the descriptor may have left its position at the end.
FolderListing::FolderListing(int folder) : folder_(folder) {
    if (::lseek(folder, 0, SEEK_SET) != 0) fault_ = errno;
}

FolderListing::FolderListing(Descriptor folder) : own_(std::move(folder)), folder_(own_.get()) {}

FolderListing::~FolderListing() = default;

const char* FolderListing::next() {
    while (!fault_) {
        if (at_ == filled_) {
            const auto count = ::getdents64(folder_, buffer_, sizeof buffer_);
            if (count < 0 && errno != ENOENT)
                fault_ = errno; // a folder removed meanwhile has no more entries
            if (count <= 0) return nullptr;
            filled_ = static_cast<std::size_t>(count);
            at_ = 0;
        }
        entry_ = reinterpret_cast<const dirent64*>(buffer_ + at_);
        at_ += entry_->d_reclen;
        if (isItem(entry_->d_name)) return entry_->d_name;
    }
    return nullptr;
}

#else

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
        if (isItem(entry_->d_name)) return entry_->d_name;
    }
    return nullptr;
}

#endif

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
