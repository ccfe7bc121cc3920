#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One end of a move: its place, held open, and its path as the caller names it.
struct MoveEnd {
    const Place& place;
    const Path& path;
};

/// Prefix of a copy's name until it is complete; the final name follows.
inline constexpr std::string_view growingCopyPrefix = ".tidwen-copy-";
/// The name of an incomplete copy of `name`, shortened where it would be too long.
std::string growingCopyName(const std::string& name);

/// The item's name in the name of its incomplete copy, or of an original set aside; nullopt for other names.
/// A shortened name gives what is left of it.
std::optional<std::string> nameOnItsWay(std::string_view entry);

/// Moves an item to another disk. A copy is written to ".tidwen-copy-<name>" in the destination's folder with
/// everything the original has, flushed and compared; then the original is renamed to ".tidwen-moved-<name>"
/// in its own folder and checked once more, the copy gets its name, and the original is renamed to
/// ".tidwen-arrived-<name>" and removed. After an error the original is complete in its old place and no copy
/// is left. What the destination's disk cannot
/// store (an attribute, an owner, a kind of item) is an error before anything changes, never left out. What
/// cannot be removed of the original, or was added to it since the copy, stays aside and is returned.
///
/// Only hard links from outside the tree are lost: those names keep the content on the old disk.
MoveResult moveByCopy(const MoveEnd& from, const MoveEnd& to);

/// Implements `FileSystem::settleInterruptedMove`. Also finishes a move on one disk that used a hard link.
MoveResult settleMoveByCopy(const MoveEnd& from, const MoveEnd& to);

/// Implements `FileSystem::revealRemains`.
FileResult<std::vector<Path>> revealAside(const MoveEnd& from);

/// The names in a folder under which such moves have set originals aside, oldest first; more than one only
/// where an earlier move left remains.
std::vector<std::string> namesAside(int folder, const std::string& name);

/// The names that originals of an item may have while they are set aside.
std::vector<std::string> namesOfSetAside(const std::string& name);

/// Whether an entry is the rest of an original that has arrived at its destination: no item any more.
bool isNameOfArrived(std::string_view entry);
/// The names that such rests of an item may have.
std::vector<std::string> namesOfArrived(const std::string& name);

} // namespace tidwen
