#include "scan/permissions/full_disk_access.h"

#include "base/path.h"
#include "platform/workspace.h"

#include <string>

namespace tidwen {

namespace {

enum class Opening { opens, refused, absent };

/// Reads one byte to open the file; the content is discarded.
Opening open(const FileSystem& files, const Path& path) {
    const auto read = files.readRange(path, 0, 1);
    if (read) return Opening::opens;
    switch (read.error().fault) {
    case FileFault::missing:
    case FileFault::notDirectory:
        return Opening::absent;
    default:
        return Opening::refused;
    }
}

} // namespace

FullDiskAccessProbe::Status FullDiskAccessProbe::status(const FileSystem& files,
                                                        const UserEnvironment& user) {
    for (const auto* guarded : {"Application Support/com.apple.TCC/TCC.db", "Safari/Bookmarks.plist"})
        switch (open(files, user.libraryFolder() / guarded)) {
        case Opening::opens:
            return Status::granted;
        case Opening::refused:
            return Status::denied;
        case Opening::absent:
            break; // try the next one
        }
    return Status::indeterminate;
}

std::optional<Message> whyNothingMoves(const UserEnvironment& user, const FileSystem& files) {
    if (!user.isOnRunningMac) return std::nullopt;
    if (FullDiskAccessProbe::status(files, user) != FullDiskAccessProbe::Status::denied) return std::nullopt;
    const auto address = SystemSettingsLauncher::address(SystemSettingsLauncher::Pane::fullDiskAccess);
    return Message{"running.fullDiskAccess %@", {std::string(address)}};
}

std::string_view name(FullDiskAccessProbe::Status status) {
    switch (status) {
    case FullDiskAccessProbe::Status::granted:
        return "granted";
    case FullDiskAccessProbe::Status::denied:
        return "denied";
    case FullDiskAccessProbe::Status::indeterminate:
        return "indeterminate";
    }
    return "indeterminate";
}

} // namespace tidwen
