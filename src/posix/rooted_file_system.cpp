#include "posix/rooted_file_system.h"

#include "base/descriptor.h"
#include "base/ownership.h"
#include "base/path.h"
#include "base/stop_token.h"
#include "posix/copied_move.h"
#include "posix/durable_write.h"
#include "posix/exclusive_rename.h"
#include "posix/extended_attributes.h"
#include "posix/file_faults.h"
#include "posix/file_lock.h"
#include "posix/flush.h"
#include "posix/folder_listing.h"
#include "posix/item_description.h"
#include "posix/mounts_within.h"
#include "posix/posix_process_runner.h"
#include "posix/root_resolver.h"
#include "posix/tree_ownership.h"
#include "posix/tree_removal.h"
#include "posix/tree_size.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

// Without O_NONBLOCK opening a pipe would wait for its writer; without O_NOCTTY a terminal would become this
// process's own.
constexpr int readFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;

/// Reads from `offset` until `length` bytes are read or the file ends; `size` is the file's size when it was
/// opened.
OsResult<std::string> readBytes(int file, std::uint64_t offset, std::size_t length, std::uint64_t size) {
    const std::uint64_t rest = size > offset ? size - offset : 0;
    // One byte more than expected: when it does not arrive, the end is known without another call.
    std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, rest + 1));
    std::string bytes;
    while (bytes.size() < wanted) {
        const std::size_t old = bytes.size();
        bytes.resize(wanted);
        const auto count = retryOnEintr([&] {
            return ::pread(file, bytes.data() + old, bytes.size() - old, static_cast<off_t>(offset + old));
        });
        if (count < 0) return tl::unexpected(errno);
        bytes.resize(old + static_cast<std::size_t>(count));
        if (count == 0 || bytes.size() == rest) break;
        // It has grown meanwhile, or does not report its size.
        if (bytes.size() == wanted) wanted = std::min(length, std::max<std::size_t>(wanted * 2, 64u << 10));
    }
    return bytes;
}

} // namespace

namespace {

bool mayTakeOut(int folder, const char* name) {
    const auto item = describeItem(folder, name);
    const auto holder = statItem(folder, ".");
    if (!item || !holder || item->immutable) return false;
    const auto isWritable = [&](const char* what) {
        return ::faccessat(folder, what, W_OK, AT_EACCESS) == 0;
    };
    if (::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) != 0) return false;
    // A moved folder gets a new "..", which requires the right to write in it.
    if (item->kind == FileKind::directory && !isWritable(name)) return false;
    const auto me = ::geteuid();
    return (holder->st_mode & S_ISVTX) == 0 || me == 0 || item->ownerID == me || holder->st_uid == me;
}

/// The kernel holds the lock as long as the file is open.
class DescriptorLock : public FolderLock {
  public:
    explicit DescriptorLock(Descriptor file) : file_(std::move(file)) {}

  private:
    Descriptor file_;
};

} // namespace

class RootedFileSystem::Impl {
  public:
    Impl(Descriptor root, RootResolver::Way way) : resolver(std::move(root), way) {}

    FileResult<FileInfo> describe(const Path& path, LastLink last) const {
#ifdef O_PATH
        if (resolver.way() == RootResolver::Way::kernel) {
            const auto item = resolver.open(path, O_PATH, last);
            if (!item) return tl::unexpected(item.error());
            return describedAt(path, item->get(), "");
        }
#endif
        const auto place = resolver.place(path, last);
        if (!place) return tl::unexpected(place.error());
        return describedAt(path, place->folder.get(), place->name.c_str());
    }

    struct OpenFile {
        Descriptor file;
        std::uint64_t size; ///< when it was opened
    };

    /// Opens a plain file. Describes it first, because opening a pipe or a device can already have an effect.
    FileResult<OpenFile> openFile(const Path& path) const {
        // Both relative to its folder, so the path is resolved once; a link's target has another folder.
        const auto place = resolver.place(path, LastLink::keep);
        if (!place) return tl::unexpected(place.error());
        const int folder = place->folder.get();
        const char* name = place->name.c_str();
        const auto item = statItem(folder, name);
        if (!item) return failed(path, item.error());
        if (S_ISREG(item->st_mode))
            return opened(path, Descriptor(retryOnEintr([&] {
                              return ::openat(folder, name, readFlags | O_NOFOLLOW | O_CLOEXEC);
                          })));
        const auto info = describe(path, LastLink::follow);
        if (!info) return tl::unexpected(info.error());
        if (info->kind == FileKind::directory) return refused(path, FileFault::isDirectory);
        if (info->kind != FileKind::regular) return refused(path, FileFault::notRegular);
        auto file = resolver.open(path, readFlags, LastLink::follow);
        if (!file) return tl::unexpected(file.error());
        return opened(path, std::move(*file));
    }

    /// The owner of a new item; nullopt outside the home.
    std::optional<Ownership> ownerOfNew(const Path& path) const {
        return home && path.isWithin(home->folder) ? std::optional(home->owner) : std::nullopt;
    }

    /// A folder outside the home is for all users: if private, no one else could use its contents.
    bool isShared(const Path& folder) const {
        return home && !folder.isWithin(home->folder);
    }

    struct Home {
        Path folder;
        Ownership owner;
    };

    RootResolver resolver;
    std::optional<Home> home;

  private:
    static FileResult<OpenFile> opened(const Path& path, Descriptor file) {
        if (!file.isOpen()) return failed(path, errno);
        const auto item = statOpen(file.get());
        if (!item) return failed(path, item.error());
        if (!S_ISREG(item->st_mode)) return refused(path, FileFault::notRegular);
        return OpenFile{std::move(file), static_cast<std::uint64_t>(item->st_size)};
    }

    static FileResult<FileInfo> describedAt(const Path& path, int folder, const char* name) {
        const auto info = describeItem(folder, name);
        if (!info) return failed(path, info.error());
        return *info;
    }
};

RootedFileSystem::RootedFileSystem(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
RootedFileSystem::~RootedFileSystem() = default;

FileResult<std::unique_ptr<RootedFileSystem>> RootedFileSystem::open(const std::filesystem::path& root,
                                                                     Resolver resolver) {
    const Path shown(root.string());
    if (shown.string().find('\0') != std::string::npos) return refused(shown, FileFault::missing);
    Descriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) return failed(shown, errno);
    bool kernel = false;
    if (resolver != Resolver::walk) {
        kernel = RootResolver::kernelResolves(folder.get());
        if (!kernel && resolver == Resolver::kernel) return refused(shown, FileFault::notSupported);
    }
    const auto way = kernel ? RootResolver::Way::kernel : RootResolver::Way::walk;
    return std::unique_ptr<RootedFileSystem>(
        new RootedFileSystem(std::make_unique<Impl>(std::move(folder), way)));
}

RootedFileSystem::Resolver RootedFileSystem::resolver() const {
    return impl_->resolver.way() == RootResolver::Way::kernel ? Resolver::kernel : Resolver::walk;
}

FileResult<void> RootedFileSystem::setHome(const Path& home) {
    const auto there = info(home);
    if (!there) return tl::unexpected(there.error());
    impl_->home = {home, {there->ownerID, there->groupID}};
    return {};
}

// Reading

FileResult<FileInfo> RootedFileSystem::info(const Path& path) const {
    return impl_->describe(path, LastLink::keep);
}

FileResult<FileInfo> RootedFileSystem::infoFollowingLinks(const Path& path) const {
    return impl_->describe(path, LastLink::follow);
}

FileResult<std::vector<DirectoryEntry>> RootedFileSystem::list(const Path& folder) const {
    auto opened = impl_->resolver.open(folder, readFlags | O_DIRECTORY, LastLink::follow);
    if (!opened) return tl::unexpected(opened.error());
    auto entries = takeEntries(std::move(*opened));
    if (!entries) return failed(folder, entries.error());
    return std::move(*entries);
}

FileResult<std::string> RootedFileSystem::read(const Path& file, std::size_t maxBytes) const {
    const auto opened = impl_->openFile(file);
    if (!opened) return tl::unexpected(opened.error());
    if (opened->size > maxBytes) return refused(file, FileFault::tooLarge);
    // One byte more than allowed detects a file that has grown since.
    auto bytes =
        readBytes(opened->file.get(), 0, maxBytes < SIZE_MAX ? maxBytes + 1 : maxBytes, opened->size);
    if (!bytes) return failed(file, bytes.error());
    if (bytes->size() > maxBytes) return refused(file, FileFault::tooLarge);
    return std::move(*bytes);
}

FileResult<std::string> RootedFileSystem::readRange(const Path& file, std::uint64_t offset,
                                                    std::size_t length) const {
    const auto opened = impl_->openFile(file);
    if (!opened) return tl::unexpected(opened.error());
    // Also rejects an offset that the kernel would take as negative.
    if (offset >= opened->size) return std::string();
    auto bytes = readBytes(opened->file.get(), offset, length, opened->size);
    if (!bytes) return failed(file, bytes.error());
    return std::move(*bytes);
}

FileResult<std::string> RootedFileSystem::extendedAttribute(const Path& path, const std::string& name) const {
    const auto info = infoFollowingLinks(path);
    if (!info) return tl::unexpected(info.error());
    const bool canHaveAny = info->kind == FileKind::regular || info->kind == FileKind::directory;
    if (!canHaveAny || name.empty() || name.find('\0') != std::string::npos)
        return refused(path, FileFault::missing);
    const auto item = impl_->resolver.open(path, readFlags, LastLink::follow);
    if (!item) return tl::unexpected(item.error());
    auto value = macAttributeOf(item->get(), name);
    if (value) return std::move(*value);
    if (value.error() == noSuchAttribute) return refused(path, FileFault::missing);
    return failed(path, value.error());
}

FileResult<Path> RootedFileSystem::resolve(const Path& path) const {
    return impl_->resolver.resolve(path);
}

FileResult<TreeSize> RootedFileSystem::treeSize(const Path& path, std::uint64_t entryLimit,
                                                const StopToken& stop) const {
    const auto place = impl_->resolver.place(path, LastLink::keep);
    if (!place) return tl::unexpected(place.error());
    const auto size = sizeOfTree(*place, entryLimit, stop);
    if (!size) return failed(path, size.error());
    return *size;
}

bool RootedFileSystem::isMovable(const Path& path) const {
    const auto real = resolveParent(path);
    if (!real) return false;
    const auto place = impl_->resolver.placeForChange(*real);
    return place && mayTakeOut(place->folder.get(), place->name.c_str());
}

std::vector<bool> RootedFileSystem::existing(const Path& folder,
                                             const std::vector<std::string>& items) const {
    const auto looks = impl_->resolver.looksBelow(folder);
    if (!looks) return FileSystem::existing(folder, items);
    std::vector<bool> areThere;
    areThere.reserve(items.size());
    for (const auto& item : items) {
        const auto answer = looks->isThere(item);
        areThere.push_back(answer ? *answer : exists(folder / item));
    }
    return areThere;
}

// Changing

FileResult<void> RootedFileSystem::createDirectory(const Path& folder) {
    if (folder.isRoot()) return refused(folder, FileFault::exists);
    const auto place = impl_->resolver.placeForChange(folder);
    if (!place) return tl::unexpected(place.error());
    const int parent = place->folder.get();
    const mode_t mode = impl_->isShared(folder) ? 0755 : 0700;
    if (::mkdirat(parent, place->name.c_str(), mode) != 0) return failed(folder, errno);
    if (const auto owner = impl_->ownerOfNew(folder))
        if (const int fault = giveNewFolder(parent, place->name.c_str(), *owner)) {
            if (fault != EBUSY) ::unlinkat(parent, place->name.c_str(), AT_REMOVEDIR);
            return failed(folder, fault);
        }
    if (const int fault = flushFolder(place->folder.get())) return failed(folder, fault);
    return {};
}

FileResult<void> RootedFileSystem::createDirectories(const Path& folder) {
    const auto isFolder = [&] {
        const auto item = info(folder);
        return item && item->kind == FileKind::directory;
    };
    if (folder.isRoot()) return {};
    if (!RootResolver::canName(folder)) return refused(folder, FileFault::missing);
    const auto place = impl_->resolver.placeForChange(folder);
    if (!place) {
        if (place.error().fault != FileFault::missing) return tl::unexpected(place.error());
        if (auto parents = createDirectories(folder.parent()); !parents) return parents;
    } else if (isFolder()) {
        return {};
    }
    auto created = createDirectory(folder);
    // Another process may have created it first; anything but a folder there stays an error.
    if (!created && created.error().fault == FileFault::exists && isFolder()) return {};
    return created;
}

MoveResult RootedFileSystem::move(const Path& from, const Path& to) {
    const auto source = impl_->resolver.placeForChange(from);
    if (!source) return tl::unexpected(source.error());
    const auto target = impl_->resolver.placeForChange(to);
    if (!target) return tl::unexpected(target.error());
    const auto item = statItem(source->folder.get(), source->name.c_str());
    if (!item) return failed(from, item.error());
    if (from != to && to.isWithin(from)) return refused(to, FileFault::notSupported);
    // A rename would take along the mount and everything on that disk.
    if (holdsMount(source->folder.get(), source->name.c_str())) return refused(from, FileFault::otherDisk);

    const int fault = renameExclusively(source->folder.get(), source->name.c_str(), target->folder.get(),
                                        target->name.c_str());
    if (fault == EXDEV) return moveByCopy({*source, from}, {*target, to});
    if (fault) return failed(fault == EEXIST || fault == ENOSPC ? to : from, fault);
    // The item is complete under one of the two names, flushed or not, so the move can no longer fail here.
    // The journal is on the disk already, and the manifest is flushed later: the order suffices.
    orderFolder(target->folder.get());
    orderFolder(source->folder.get());
    return {};
}

MoveResult RootedFileSystem::settleInterruptedMove(const Path& from, const Path& to) {
    const auto source = impl_->resolver.placeForChange(from);
    if (!source) return tl::unexpected(source.error());
    const auto target = impl_->resolver.placeForChange(to);
    if (!target) return tl::unexpected(target.error());
    return settleMoveByCopy({*source, from}, {*target, to});
}

bool RootedFileSystem::isSetAside(const Path& from) const {
    const auto source = impl_->resolver.place(from, LastLink::keep);
    return source && !namesAside(source->folder.get(), source->name).empty();
}

FileResult<std::vector<Path>> RootedFileSystem::revealRemains(const Path& from) {
    const auto source = impl_->resolver.placeForChange(from);
    if (!source) return tl::unexpected(source.error());
    return revealAside({*source, from});
}

FileResult<void> RootedFileSystem::replaceFile(const Path& file, std::string_view content, NewFileMode mode) {
    const auto place = impl_->resolver.placeForChange(file);
    if (!place) return tl::unexpected(place.error());
    return replaceDurably(*place, file, content, mode, impl_->ownerOfNew(file));
}

void RootedFileSystem::dropUnfinishedReplacement(const Path& file) {
    if (const auto place = impl_->resolver.placeForChange(file)) dropStaleReplacement(*place);
}

FileResult<void> RootedFileSystem::removeFile(const Path& file) {
    const auto place = impl_->resolver.placeForChange(file);
    if (!place) return tl::unexpected(place.error());
    const auto item = statItem(place->folder.get(), place->name.c_str());
    if (!item) return failed(file, item.error());
    if (S_ISDIR(item->st_mode)) return refused(file, FileFault::isDirectory);
    if (!S_ISREG(item->st_mode) && !S_ISLNK(item->st_mode)) return refused(file, FileFault::notRegular);
    if (::unlinkat(place->folder.get(), place->name.c_str(), 0) != 0) return failed(file, errno);
    if (const int fault = flushFolder(place->folder.get())) return failed(file, fault);
    return {};
}

FileResult<void> RootedFileSystem::removeEmptyDirectory(const Path& folder) {
    const auto place = impl_->resolver.placeForChange(folder);
    if (!place) return tl::unexpected(place.error());
    if (::unlinkat(place->folder.get(), place->name.c_str(), AT_REMOVEDIR) != 0) return failed(folder, errno);
    if (const int fault = flushFolder(place->folder.get())) return failed(folder, fault);
    return {};
}

FileResult<void> RootedFileSystem::removeTree(const Path& folder) {
    const auto place = impl_->resolver.placeForChange(folder);
    if (!place) return tl::unexpected(place.error());
    if (const int fault = tidwen::removeTree(place->folder.get(), place->name.c_str()))
        return failed(folder, fault);
    if (const int fault = flushFolder(place->folder.get())) return failed(folder, fault);
    return {};
}

FileResult<bool> RootedFileSystem::holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) {
    const auto place = impl_->resolver.placeForChange(item);
    if (!place) return tl::unexpected(place.error());
    const auto answer = tidwen::holdsOthersItems(place->folder.get(), place->name.c_str(), ownerID);
    if (!answer) return failed(item, answer.error());
    return *answer;
}

FileResult<std::unique_ptr<FolderLock>> RootedFileSystem::lock(const Path& folder) {
    const auto place = impl_->resolver.placeForChange(folder);
    if (!place) return tl::unexpected(place.error());
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor opened(
        retryOnEintr([&] { return ::openat(place->folder.get(), place->name.c_str(), flags); }));
    if (!opened.isOpen()) return failed(folder, errno);
    if (const int fault = tryLock(opened.get()))
        return fault == EWOULDBLOCK ? refused(folder, FileFault::busy) : failed(folder, fault);
    return std::make_unique<DescriptorLock>(std::move(opened));
}

} // namespace tidwen
