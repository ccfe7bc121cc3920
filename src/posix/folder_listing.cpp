#include "posix/folder_listing.h"

#include "posix/item_description.h"

#include <algorithm>
#include <fcntl.h>
#ifdef __linux__
#include <sys/syscall.h>
#endif

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
    return Descriptor(uninterrupted([&] {
        return ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
}

#ifdef __linux__

FolderListing::FolderListing(int folder) : folder_(folder) {
    if (::lseek(folder, 0, SEEK_SET) != 0) fault_ = errno; // another listing may have left it at the end
}

FolderListing::FolderListing(Descriptor folder) : own_(std::move(folder)), folder_(own_.get()) {}

FolderListing::~FolderListing() = default;

const FolderListing::Entry* FolderListing::readNext() {
    if (fault_) return nullptr;
    if (at_ == filled_) {
        const auto count =
            uninterrupted([&] { return ::syscall(SYS_getdents64, folder_, buffer_.data(), buffer_.size()); });
        if (count < 0 && errno != ENOENT) fault_ = errno; // a folder that was removed meanwhile is at its end
        if (count <= 0) return nullptr;
        at_ = 0;
        filled_ = static_cast<std::size_t>(count);
    }
    const auto* entry = reinterpret_cast<const Entry*>(buffer_.data() + at_);
    at_ += entry->length;
    return entry;
}

#else

FolderListing::FolderListing(int folder) {
    // A stream owns its descriptor: it gets one of its own. Both share one position, which another listing
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

const FolderListing::Entry* FolderListing::readNext() {
    if (!stream_) return nullptr;
    errno = 0;
    const auto* entry =
        ::readdir(stream_); // NOLINT(concurrency-mt-unsafe): the stream is this listing's alone
    if (!entry) fault_ = errno;
    return entry;
}

#endif

const char* FolderListing::next() {
    while ((entry_ = readNext())) {
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
