#include "posix/entry_sizes.h"

#include "posix/folder_listing.h"
#include "posix/item_description.h"

#include <cstdint>
#ifdef __APPLE__
#include <sys/attr.h>
#include <unistd.h>
#endif

namespace tidwen {

namespace {

constexpr std::uint64_t blockBytes = 512; // the unit of st_blocks on every file system

bool takeSingly(int folder, const char* name, const TakeEntry& take) {
    const auto item = statItem(folder, name);
    if (!item) return take(name, nullptr);
    const auto size = entrySize(*item);
    return take(name, &size);
}

#ifdef __APPLE__
static_assert(BulkEntries::common
              == (ATTR_CMN_RETURNED_ATTRS | ATTR_CMN_ERROR | ATTR_CMN_FILEID | ATTR_CMN_OBJTYPE
                  | ATTR_CMN_DEVID | ATTR_CMN_NAME));
static_assert(BulkEntries::file == (ATTR_FILE_ALLOCSIZE | ATTR_FILE_LINKCOUNT));

/// False when the disk does not answer in this way, before anything was taken.
bool listInBulk(int folder, const TakeEntry& take) {
    struct attrlist wanted {};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = BulkEntries::common;
    wanted.fileattr = BulkEntries::file;
    alignas(8) char buffer[32 << 10];
    ::lseek(folder, 0, SEEK_SET);
    for (bool isFirst = true;; isFirst = false) {
        const int count = ::getattrlistbulk(folder, &wanted, buffer, sizeof buffer, 0);
        if (count <= 0) return count == 0 || !isFirst;
        BulkEntries entries({buffer, sizeof buffer});
        for (int i = 0; i < count; ++i) {
            const auto entry = entries.next();
            if (!entry) return !isFirst || i > 0;
            const bool goesOn = entry->size ? take(entry->name.data(), &*entry->size)
                                            : takeSingly(folder, entry->name.data(), take);
            if (!goesOn) return true;
        }
    }
}
#endif

} // namespace

EntrySize entrySize(const struct stat& item) {
    return {.device = static_cast<std::uint64_t>(item.st_dev),
            .inode = item.st_ino,
            .links = item.st_nlink,
            .allocatedBytes = static_cast<std::uint64_t>(item.st_blocks) * blockBytes,
            .isFolder = S_ISDIR(item.st_mode)};
}

void listSizesSingly(int folder, const TakeEntry& take) {
    FolderListing listing(folder);
    while (const char* name = listing.next())
        if (!takeSingly(folder, name, take)) return;
}

void listSizes(int folder, const TakeEntry& take) {
#ifdef __APPLE__
    if (listInBulk(folder, take)) return;
#endif
    listSizesSingly(folder, take);
}

} // namespace tidwen
