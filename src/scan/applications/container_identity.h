#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The identifier that macOS records for a sandbox container, whatever its folder's name: from
/// ".com.apple.containermanagerd.metadata.plist", else from the "Container.plist" of macOS 10.15 and older.
/// nullopt when neither can be read.
std::optional<std::string> containerIdentity(const FileSystem& files, const Path& container);

/// The application groups that its owner was signed for when the container was made.
std::vector<std::string> containerGroups(const FileSystem& files, const Path& container);

/// The recorded identity, else the folder's name when there is no record. nullopt when the record is
/// unreadable or names no owner, or the budget of the run is exhausted: the folder may have any name, so its
/// owner is unknown.
std::optional<std::string> containerOwner(const FileSystem& files, const Path& container);

/// A record of the owner exists, or may, and is unreadable or names no owner. False when the budget of the
/// run is exhausted; that counts as left out.
bool hidesItsOwner(const FileSystem& files, const Path& container);

} // namespace tidwen
