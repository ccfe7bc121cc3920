#pragma once

#include "platform/file_system.h"

#include <optional>
#include <string>

namespace tidwen {

/// The identifier that macOS keeps for a sandbox container, whatever its folder is called: from
/// ".com.apple.containermanagerd.metadata.plist", else from the "Container.plist" of macOS 10.15 and before.
/// Nothing when neither can be read.
std::optional<std::string> containerIdentity(const FileSystem& files, const Path& container);

/// Its identity; the folder's name when macOS keeps no record of it. Nothing when the record does not say,
/// cannot be read, or the budget of the run does not suffice to look: the folder may bear any name, so nobody
/// knows whose it is.
std::optional<std::string> containerOwner(const FileSystem& files, const Path& container);

/// A record of its owner is, or may be, there, and cannot be read or does not say whose it is. False when the
/// budget of the run does not suffice to look: that is counted as left out.
bool hidesItsOwner(const FileSystem& files, const Path& container);

} // namespace tidwen
