#pragma once

#include "base/ownership.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <optional>
#include <string_view>

namespace tidwen {

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
