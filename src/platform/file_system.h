#pragma once

#include "base/path.h"
#include "base/stop_token.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

// The port to the files of one Mac: a volume's folder or the running system's disk. All file work goes
// through it.

enum class FileKind { regular, directory, symbolicLink, other };

/// The attributes of one item. A symbolic link is described itself unless stated otherwise.
struct FileInfo {
    FileKind kind = FileKind::other;
    std::uint64_t size = 0;           ///< bytes of content
    std::uint64_t allocatedBytes = 0; ///< bytes allocated on the disk
    std::uint32_t permissions = 0;    ///< the lower twelve bits of the mode
    std::uint32_t ownerID = 0;
    std::uint32_t groupID = 0;
    std::int64_t modifiedNanoseconds = 0; ///< since 1970
    std::uint64_t device = 0;
    std::uint64_t mount =
        0; ///< distinguishes two mounts of one device; 0 where the system does not number mounts
    std::uint64_t inode = 0;
    bool immutable = false; ///< has a flag that forbids moving it, even by its owner
    std::optional<std::int64_t>
        createdNanoseconds; ///< creation, since 1970; absent where the file system does not store it
    /// When the item was added to its folder, since 1970; where the file system does not store that, the time
    /// of its last status change, which a move updates.
    std::optional<std::int64_t> addedNanoseconds;
};

struct DirectoryEntry {
    std::string name; ///< as stored, possibly not valid UTF-8
    FileKind kind = FileKind::other;
};

enum class FileFault {
    missing, ///< an item or one of its parents does not exist
    exists,  ///< the destination is taken, also by a dangling link
    denied,  ///< permissions, a read-only disk, an immutable item, privacy protection
    notDirectory,
    isDirectory,
    throughLink, ///< a parent is a symbolic link where none may be
    notRegular,  ///< read of something that is not a plain file
    tooLarge,    ///< more bytes than the caller allows
    noSpace,
    nameTooLong,
    busy,         ///< another process has it locked or is changing it
    exhausted,    ///< not read: the budget of the run is exhausted
    notSupported, ///< the file system does not support it
    otherDisk,    ///< another file system or folder is mounted there
    io,           ///< anything else
};

struct FileError {
    FileFault fault = FileFault::io;
    Path path;      ///< the path that caused the error
    int osCode = 0; ///< errno, for the log only

    friend bool operator==(const FileError&, const FileError&) = default;
};

/// The text key of a fault ("failure.file.missing" …).
std::string_view failureKey(FileFault fault);

template<class T>
using FileResult = tl::expected<T, FileError>;

/// The result of a tree walk, complete or stopped early.
struct TreeSize {
    std::uint64_t allocatedBytes = 0;
    std::uint64_t entries = 0; ///< items visited, without the folder itself; links are not followed
    bool capped = false;       ///< stopped at the limit; `allocatedBytes` is a lower bound
};

/// What a move between devices could not remove of the original although the copy is complete.
struct MoveRemains {
    /// Hidden, in the original's folder; the original's own path when another process took away what was set
    /// aside before all of it was removed.
    Path place;
    /// `busy`: the original was written to after it was copied, so what is left has no copy. Any other fault
    /// is why the system refused to remove what has a copy.
    FileFault fault = FileFault::busy;

    friend bool operator==(const MoveRemains&, const MoveRemains&) = default;
};

/// The result of a successful move; no remains when the original is completely gone.
using MoveResult = FileResult<std::optional<MoveRemains>>;

/// What `replaceFile` keeps of the file it replaces.
enum class NewFileMode { privateToOwner, likeExisting };

/// Held until it is destroyed or its process ends.
class FolderLock {
  public:
    virtual ~FolderLock() = default;
};

class BudgetedFiles;

/// A Mac's file system. All paths are absolute Mac paths; on a mounted volume they are resolved inside its
/// root, and no path, through whatever links, names anything outside it.
///
/// Calls block, are thread-safe, and never throw. Reading follows symbolic links (inside the root). Every
/// call that changes the disk refuses a path whose *parents* contain a link (`FileFault::throughLink`) and
/// does not follow the last component: resolve with `resolveParent` and check the result first, so that
/// exactly the checked path is changed.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Reading

    /// Describes the item itself; a symbolic link is not followed.
    virtual FileResult<FileInfo> info(const Path& path) const = 0;
    /// Describes the target of the path; a dangling link is `missing`.
    virtual FileResult<FileInfo> infoFollowingLinks(const Path& path) const = 0;
    /// Entries of a folder, without "." and "..", sorted by the bytes of their names.
    virtual FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const = 0;
    /// The content of a plain file of at most `maxBytes`. Never blocks on a pipe or device.
    virtual FileResult<std::string> read(const Path& file, std::size_t maxBytes) const = 0;
    /// Up to `length` bytes from `offset`; shorter at the end of the file.
    virtual FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                              std::size_t length) const = 0;
    /// The value of an extended attribute; `missing` when the item does not have it.
    virtual FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const = 0;
    /// The path with every link resolved, as a Mac path. If nothing exists there, the error carries the
    /// resolved path.
    virtual FileResult<Path> resolve(const Path& path) const = 0;
    /// Allocated bytes of a plain file, or of a folder and everything below it, stopping after `entryLimit`
    /// entries. Other file systems below are not entered. An unreadable subfolder counts as empty.
    virtual FileResult<TreeSize> treeSize(const Path& path, std::uint64_t entryLimit,
                                          const StopToken& stop = {}) const = 0;
    /// Whether this process may move the item out of its folder. Based on permissions, owners and flags, so a
    /// move can still fail; false for missing items.
    virtual bool isMovable(const Path& path) const = 0;
    /// For each relative path below a folder, whether `exists` holds for it.
    virtual std::vector<bool> existing(const Path& folder, const std::vector<std::string>& items) const;
    /// The run whose budget pays for reading; null without one.
    virtual const BudgetedFiles* budgeted() const { return nullptr; }

    // Changing

    /// Creates one folder, private to its owner inside a home; its parent must exist. `exists` when the name
    /// is taken.
    virtual FileResult<void> createDirectory(const Path& folder) = 0;
    /// Creates the folder and its missing parents with the same permissions. Succeeds when it already exists.
    virtual FileResult<void> createDirectories(const Path& folder) = 0;
    /// Moves an item; a link is moved itself. Never replaces anything and never moves a mount (`otherDisk`).
    /// Between devices everything is copied, flushed and compared before the original is removed. After an
    /// error the original is complete in its old place. Remains of an earlier move do not prevent another
    /// one.
    virtual MoveResult move(const Path& from, const Path& to) = 0;
    /// Recovers a move between devices that was killed or left remains: completes it when the original was
    /// already set aside, else removes the unfinished copy; removes remains that also exist at the
    /// destination. Does nothing when there is nothing to recover. Returns remains that stay. `busy` while
    /// another process is making the move.
    virtual MoveResult settleInterruptedMove(const Path& from, const Path& to) = 0;
    /// True when a move between devices left the item of `from`, or remains of it, aside: after a kill it is
    /// at neither place until `settleInterruptedMove` has run.
    virtual bool isSetAside(const Path& from) const = 0;
    /// Gives remains of moves away from `from` a visible name: that of `from`, or a free one beside it
    /// ("Name 2.ext"). Call `settleInterruptedMove` first, so that what has a copy is removed. Returns the
    /// new names in order. `busy` while another process is making such a move.
    virtual FileResult<std::vector<Path>> revealRemains(const Path& from) = 0;
    /// Writes a file so that after a crash it has either the old or the new content: temporary file in the
    /// same folder, flushed, renamed over the target, folder flushed. `likeExisting` keeps permissions, owner
    /// and extended attributes of the file it replaces.
    virtual FileResult<void> replaceFile(const Path& file, std::string_view content, NewFileMode mode) = 0;
    /// Removes what a kill during `replaceFile` left beside the file, unless another process is writing it.
    virtual void dropUnfinishedReplacement(const Path& file) = 0;
    /// Removes a plain file or a link and flushes its folder.
    virtual FileResult<void> removeFile(const Path& file) = 0;
    /// Removes a folder that is empty.
    virtual FileResult<void> removeEmptyDirectory(const Path& folder) = 0;
    /// Deletes an item and everything in it permanently: never through a link, and nothing mounted at or
    /// below it (`otherDisk`). Makes unreadable folders of this user accessible. What cannot be deleted stays
    /// with the folders above it; the error is the first reason.
    virtual FileResult<void> removeTree(const Path& folder) = 0;
    /// Whether an item or anything below it belongs to another owner or cannot be inspected. Without
    /// `ownerID`, any owner other than this process counts as another, and for root none does. Makes
    /// unreadable folders of this user accessible while it looks. `otherDisk` when something is mounted
    /// there.
    virtual FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) = 0;
    /// Locks a folder, which must not be a link, against other processes. Leaves nothing on disk. `busy` when
    /// another process holds the lock.
    virtual FileResult<std::unique_ptr<FolderLock>> lock(const Path& folder) = 0;

    // Derived from the calls above

    /// Anything exists there, including a dangling link.
    bool exists(const Path& path) const { return info(path).has_value(); }
    /// The path with the links of its parents resolved; the last component is not followed.
    FileResult<Path> resolveParent(const Path& path) const;
    bool isDirectoryFollowingLinks(const Path& path) const;
};

} // namespace tidwen
