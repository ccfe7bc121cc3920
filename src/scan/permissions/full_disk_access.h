#pragma once

#include "base/message.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// Whether macOS lets this program read protected files, found by opening files that require Full Disk
/// Access.
struct FullDiskAccessProbe {
    enum class Status { granted, denied, indeterminate };
    static Status status(const FileSystem& files, const UserEnvironment& user);
};
std::string_view name(FullDiskAccessProbe::Status status);

/// Why nothing of the running Mac may be moved: without Full Disk Access not even the Trash can be opened,
/// and a removal would end half-way. nullopt when it may, and on a volume. Opens files.
std::optional<Message> whyNothingMoves(const UserEnvironment& user, const FileSystem& files);

} // namespace tidwen
