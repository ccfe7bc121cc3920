#pragma once

#include "base/ownership.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// Implements `FileSystem::replaceFile`. The new content is written to ".tidwen-new-<name>" beside the file,
/// locked meanwhile; one without a lock is left from a crash and is removed first. A file that does not
/// inherit an owner is given to `owner`, if any.
FileResult<void> replaceDurably(const Place& place, const Path& file, std::string_view content,
                                NewFileMode mode, const std::optional<Ownership>& owner);

/// Implements `FileSystem::dropUnfinishedReplacement`.
void dropStaleReplacement(const Place& place);

/// `prefix` + `name`; where that exceeds 255 bytes, the end is replaced by a hash of the name.
std::string nameBeside(std::string_view prefix, std::string_view name);

} // namespace tidwen
