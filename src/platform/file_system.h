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

// The port to the files of the Mac that is worked on: a volume's folder, or the running system's disk. All
// file work goes through it.

enum class FileKind { regular, directory, symbolicLink, other };

/// What the file system says of one item. Symbolic links are described themselves unless said otherwise.
struct FileInfo {
    FileKind kind = FileKind::other;
    std::uint64_t size = 0;           ///< bytes of content
    std::uint64_t allocatedBytes = 0; ///< bytes taken on the disk
    std::uint32_t permissions = 0;    ///< the mode's lower twelve bits
    std::uint32_t ownerID = 0;
    std::uint32_t groupID = 0;
    std::int64_t modifiedNanoseconds = 0; ///< since 1970
    std::uint64_t device = 0;
    std::uint64_t mount = 0; ///< tells apart two mounts of one device; 0 where the system does not
    std::uint64_t inode = 0;
    bool immutable = false; ///< carries a flag that forbids moving it, also for its owner
    std::optional<std::int64_t>
        createdNanoseconds; ///< birth, since 1970; absent where the disk does not keep it
    /// When the item came into its folder, since 1970; where the disk does not keep that, when the system
    /// last wrote its record, which a move does.
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
    notRegular,  ///< asked to read something that is no plain file
    tooLarge,    ///< more bytes than the caller allowed
    noSpace,
    nameTooLong,
    busy,         ///< another process holds it or is changing it
    exhausted,    ///< not looked at: the budget of the run is spent
    notSupported, ///< the file system or disk cannot do it
    otherDisk,    ///< another disk, or another folder, is mounted there
    io,           ///< anything else
};

struct FileError {
    FileFault fault = FileFault::io;
    Path path;      ///< the end of the operation that was at fault
    int osCode = 0; ///< errno, for the log; decides nothing

    friend bool operator==(const FileError&, const FileError&) = default;
};

/// The key of the words for a fault ("failure.file.missing" …).
std::string_view failureKey(FileFault fault);

template<class T>
using FileResult = tl::expected<T, FileError>;

/// What a walk of a folder found before it ended or was cut short.
struct TreeSize {
    std::uint64_t allocatedBytes = 0;
    std::uint64_t entries = 0; ///< items visited, the folder itself not counted; links are not followed
    bool capped = false;       ///< stopped at the limit: `allocatedBytes` is a lower bound
};

/// What a move between devices could not take away of the original, although the item arrived complete.
struct MoveRemains {
    Path place; ///< hidden, in the original's folder
    /// `busy`: somebody wrote in the original after it was copied, so what lies there has no copy. Anything
    /// else is why the system refused to remove what has one.
    FileFault fault = FileFault::busy;

    friend bool operator==(const MoveRemains&, const MoveRemains&) = default;
};

/// The outcome of a move that arrived; the remains are absent when nothing is left of the original.
using MoveResult = FileResult<std::optional<MoveRemains>>;

/// How a tree may be changed: what `replaceFile` keeps of the file it replaces.
enum class NewFileMode { privateToOwner, likeExisting };

/// Held until it is destroyed, or its process ends.
class FolderLock {
  public:
    virtual ~FolderLock() = default;
};

class BudgetedFiles;

/// A Mac's files. All paths are absolute Mac paths; on a mounted volume they are resolved inside its root and
/// nothing outside it can be named, whatever links the volume holds.
///
/// Calls block, may come from any thread, and never throw. Reading follows symbolic links (inside the root);
/// everything that changes the disk refuses a path whose *parents* hold a link (`FileFault::throughLink`) and
/// takes the last component as it is: resolve first with `resolveParent` and judge the answer, so that what
/// was judged is what is touched.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Reading

    /// Describes the item itself; a symbolic link is not followed.
    virtual FileResult<FileInfo> info(const Path& path) const = 0;
    /// Describes what the path leads to; a dangling link is `missing`.
    virtual FileResult<FileInfo> infoFollowingLinks(const Path& path) const = 0;
    /// Entries of a folder, without "." and "..", sorted by the bytes of their names.
    virtual FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const = 0;
    /// The whole content of a plain file of at most `maxBytes`. Never blocks on a pipe or device.
    virtual FileResult<std::string> read(const Path& file, std::size_t maxBytes) const = 0;
    /// Up to `length` bytes from `offset`; shorter at the end of the file.
    virtual FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                              std::size_t length) const = 0;
    /// An extended attribute's value; `missing` when the item has none of that name.
    virtual FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const = 0;
    /// The path with every link resolved, as a Mac path. Where nothing is, the error names the resolved
    /// place.
    virtual FileResult<Path> resolve(const Path& path) const = 0;
    /// Allocated bytes of a plain file, or of everything below a folder (the folder included), stopping after
    /// `entryLimit` entries. Other file systems below are not entered. An unreadable subfolder counts as
    /// empty.
    virtual FileResult<TreeSize> treeSize(const Path& path, std::uint64_t entryLimit,
                                          const StopToken& stop = {}) const = 0;
    /// May this process take the item out of its folder? Judged by permissions, owners and flags, so a move
    /// can still fail; never true for what is not there.
    virtual bool isMovable(const Path& path) const = 0;
    /// Which of the items that lie below a folder, as relative paths, are there; as `exists` says of each
    /// one.
    virtual std::vector<bool> existing(const Path& folder, const std::vector<std::string>& items) const;
    /// The run whose budget reading spends; null where nobody set one.
    virtual const BudgetedFiles* budgeted() const { return nullptr; }

    // Changing

    /// Creates one folder, closed to others inside a home; its parent must exist. `exists` when it is taken.
    virtual FileResult<void> createDirectory(const Path& folder) = 0;
    /// Creates the folder and its missing parents in the same way. Succeeds when it is there already.
    virtual FileResult<void> createDirectories(const Path& folder) = 0;
    /// Moves an item, also a link itself; never replaces anything, and takes no mount along (`otherDisk`).
    /// Between two devices everything is copied, flushed and compared before the original goes. After an
    /// error the original is complete where it was. What an earlier move of it left is not in the way.
    virtual MoveResult move(const Path& from, const Path& to) = 0;
    /// After a kill in the middle of a move between devices, or after one that left remains: completes it
    /// when the original was already set aside, else drops the unfinished copy; removes remains that are at
    /// the destination too. Does nothing when there is nothing to settle. The answer tells remains that stay.
    virtual MoveResult settleInterruptedMove(const Path& from, const Path& to) = 0;
    /// True when a move between devices left the item of `from`, or remains of it, aside: after a kill it is
    /// at neither place until `settleInterruptedMove` brings it to one of them.
    virtual bool isSetAside(const Path& from) const = 0;
    /// Gives remains of moves away from `from` a name that people see: that of `from`, or a free one beside
    /// it ("Name 2.ext"). Settle first, so that what has a copy is gone. The names given, in their order.
    virtual FileResult<std::vector<Path>> revealRemains(const Path& from) = 0;
    /// Writes a file so that after a crash either the old content or the new is there: temporary file in the
    /// same folder, flushed, renamed over, folder flushed. Permissions, owner and extended attributes of a
    /// file that it replaces are kept with `likeExisting`.
    virtual FileResult<void> replaceFile(const Path& file, std::string_view content, NewFileMode mode) = 0;
    /// Takes away what a kill in the middle of `replaceFile` left beside the file, unless somebody is writing
    /// it.
    virtual void dropUnfinishedReplacement(const Path& file) = 0;
    /// Removes a plain file or a link and flushes its folder.
    virtual FileResult<void> removeFile(const Path& file) = 0;
    /// Removes a folder that is empty.
    virtual FileResult<void> removeEmptyDirectory(const Path& folder) = 0;
    /// Deletes an item with everything in it, for good: never through a link, and nothing that is mounted at
    /// or below it (`otherDisk`). Opens folders of this user's own that forbid it. What cannot be deleted
    /// stays, with the folders above it; the error tells the first reason.
    virtual FileResult<void> removeTree(const Path& folder) = 0;
    /// Whether an item or anything below it belongs to another owner, or cannot be looked at. Without an
    /// `ownerID` that is another than this process, and to one of root's nothing is another's. Opens folders
    /// of this user's own that forbid it for as long as it looks. `otherDisk` when something is mounted
    /// there.
    virtual FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) = 0;
    /// Takes a lock between processes on a folder, which must be no link. Leaves nothing behind. `busy` when
    /// another process holds it.
    virtual FileResult<std::unique_ptr<FolderLock>> lock(const Path& folder) = 0;

    // Said in terms of the above

    /// Anything there, a dangling link included.
    bool exists(const Path& path) const { return info(path).has_value(); }
    /// The path with the links of its parents resolved and its last component kept.
    FileResult<Path> resolveParent(const Path& path) const;
    bool isDirectoryFollowingLinks(const Path& path) const;
};

} // namespace tidwen
