#pragma once

#include "base/ownership.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// Brings an open file's content to the disk itself. 0 or the errno.
int flushFile(int descriptor);

/// Brings the names in a folder to the disk. A folder that may be changed but not read, and a disk that
/// flushes by itself, count as done. 0 or the errno.
int flushFolder(int folder);

/// Brings everything to the disk that was written to the one this folder is on. 0 or the errno.
int flushDisk(int folder);

/// Writes all of it. 0 or the errno.
int writeFully(int descriptor, std::string_view bytes);

/// What `FileSystem::replaceFile` promises. The new content grows in ".tidwen-new-<name>" beside the file,
/// locked while it is written: one that nobody holds is left from a crash and is taken away first. A file
/// that keeps no owner of an earlier one is given to `owner`, if any.
FileResult<void> replaceDurably(const Place& place, const Path& file, std::string_view content,
                                NewFileMode mode, const std::optional<Ownership>& owner);

/// What `FileSystem::dropUnfinishedReplacement` promises.
void dropStaleReplacement(const Place& place);

/// `prefix` + `name`; where that exceeds the 255 bytes of a name, the end is replaced by a hash of the name.
std::string nameBeside(std::string_view prefix, std::string_view name);

} // namespace tidwen
