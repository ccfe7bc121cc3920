#include "posix/durable_write.h"

#include "base/descriptor.h"
#include "base/numbered_name.h"
#include "base/path.h"
#include "platform/unfinished_names.h"
#include "posix/extended_attributes.h"
#include "posix/file_faults.h"
#include "posix/file_lock.h"
#include "posix/flush.h"
#include "posix/item_description.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <fmt/format.h>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

bool isSame(const OsResult<struct stat>& a, const OsResult<struct stat>& b) {
    return a && b && a->st_dev == b->st_dev && a->st_ino == b->st_ino;
}

/// Removes a temporary file left by a crash. EEXIST when it is being written or is not a file.
int removeStale(int folder, const char* name) {
    const Descriptor stale(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!stale.isOpen()) return errno == ENOENT ? 0 : EEXIST;
    const auto item = statOpen(stale.get());
    if (!item || !S_ISREG(item->st_mode) || tryLock(stale.get()) != 0) return EEXIST;
    // Its writer may have renamed it between the two calls; then the name refers to another file.
    if (!isSame(item, statItem(folder, name))) return 0;
    return ::unlinkat(folder, name, 0) == 0 || errno == ENOENT ? 0 : errno;
}

std::string replacementName(const Place& place) {
    return nameBeside(unfinishedReplacementPrefix, place.name);
}

OsResult<Descriptor> createTemporary(int folder, const char* name) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        Descriptor file(::openat(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (file.isOpen()) {
            // Between the two calls another writer may have removed it as stale.
            if (tryLock(file.get()) == 0 && isSame(statOpen(file.get()), statItem(folder, name))) return file;
        } else if (errno != EEXIST) {
            return tl::unexpected(errno);
        } else if (const int fault = removeStale(folder, name)) {
            return tl::unexpected(fault);
        }
    }
    return tl::unexpected(EEXIST);
}

/// Owner before mode, because chown clears the set-user bits. Returns 0 or the errno.
int keepIdentity(int folder, const char* existing, int file) {
    const auto item = statItem(folder, existing);
    if (!item && item.error() == ENOENT) return 0;
    if (!item) return item.error();
    if (!S_ISREG(item->st_mode)) return 0; // a link's mode and owner are not the file's
    const Descriptor old(::openat(folder, existing, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!old.isOpen()) return errno;
    const auto now = statOpen(file);
    if (!now) return now.error();
    if ((now->st_uid != item->st_uid || now->st_gid != item->st_gid)
        && ::fchown(file, item->st_uid, item->st_gid) != 0)
        return errno;
    if (const int fault = copyExtendedAttributes(old.get(), file)) return fault;
    return ::fchmod(file, item->st_mode & 07777) == 0 ? 0 : errno;
}

} // namespace

FileResult<void> replaceDurably(const Place& place, const Path& file, std::string_view content,
                                NewFileMode mode, const std::optional<Ownership>& owner) {
    const int folder = place.folder.get();
    const auto existing = statItem(folder, place.name.c_str());
    if (existing && S_ISDIR(existing->st_mode)) return refused(file, FileFault::isDirectory);

    const std::string temporary = replacementName(place);
    auto created = createTemporary(folder, temporary.c_str());
    if (!created) return failed(file, created.error());
    int fault = writeFully(created->get(), content);
    if (!fault && owner) fault = giveFile(created->get(), *owner);
    if (!fault && mode == NewFileMode::likeExisting)
        fault = keepIdentity(folder, place.name.c_str(), created->get());
    if (!fault) fault = flushFile(created->get());
    if (!fault && ::renameat(folder, temporary.c_str(), folder, place.name.c_str()) != 0) fault = errno;
    if (fault) {
        ::unlinkat(folder, temporary.c_str(), 0);
        return failed(file, fault);
    }
    if (const int flush = flushFolder(folder)) return failed(file, flush);
    return {};
}

void dropStaleReplacement(const Place& place) {
    removeStale(place.folder.get(), replacementName(place).c_str());
}

std::string nameBeside(std::string_view prefix, std::string_view name) {
    std::string whole = fmt::format("{}{}", prefix, name);
    if (whole.size() <= longestFileName) return whole;
    std::uint64_t hash = 0xcbf29ce484222325u; // FNV-1a: the same in every run, including after a crash
    for (const char byte : name)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3u;
    const std::string tail = fmt::format("-{:016x}", hash);
    std::size_t length = longestFileName - tail.size();
    // Not inside a character: some file systems accept only valid UTF-8.
    while (length > prefix.size() && (static_cast<unsigned char>(whole[length]) & 0xC0) == 0x80)
        --length;
    return whole.substr(0, length) + tail;
}

} // namespace tidwen
