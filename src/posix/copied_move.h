#pragma once

#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One end of a move: where it is, held open, and what it is called towards the caller.
struct MoveEnd {
    const Place& place;
    const Path& path;
};

/// What a copy is called until it is whole; the name that it will get follows.
inline constexpr std::string_view growingCopyPrefix = ".tidwen-copy-";
/// The name of the copy that will be called `name`, shortened where the whole would be too long.
std::string growingCopyName(const std::string& name);

/// Moves an item to another disk. A copy grows in ".tidwen-copy-<name>" in the destination's folder with
/// everything that the original has, is flushed and compared; then the original is renamed to
/// ".tidwen-moved-<name>" in its own folder, looked at once more, the copy gets its name, and the original is
/// removed. An error leaves the original complete where it was and no copy. What the destination's disk
/// cannot keep (an attribute, an owner, a kind of item) is an error before anything changes, never left out.
/// What of the original cannot be removed, or came to it since it was copied, stays aside and is told.
///
/// Only hard links from outside the tree do not survive: their other names keep the content on the old disk.
MoveResult moveByCopy(const MoveEnd& from, const MoveEnd& to);

/// What `FileSystem::settleInterruptedMove` promises. Also finishes a move on one disk that was made of a
/// hard link.
MoveResult settleMoveByCopy(const MoveEnd& from, const MoveEnd& to);

/// What `FileSystem::revealRemains` promises.
FileResult<std::vector<Path>> revealAside(const MoveEnd& from);

/// The names under which originals of such moves stand aside in a folder, the oldest first: more than one
/// only where an earlier move left remains.
std::vector<std::string> namesAside(int folder, const std::string& name);

} // namespace tidwen
