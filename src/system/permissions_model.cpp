#include "system/permissions_model.h"

#include <fmt/core.h>

namespace tidwen {
namespace {

enum class Opening { opens, refused, absent };

/// Reading one byte opens the file; nothing of it is kept.
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
            break; // the next one tells
        }
    return Status::indeterminate;
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

PermissionsModel::PermissionsModel(const FileSystem& files, UserEnvironment user,
                                   IsFinderExtensionEnabled isFinderExtensionEnabled, Log& log)
    : files_(files),
      user_(std::move(user)),
      isFinderExtensionEnabled_(std::move(isFinderExtensionEnabled)),
      log_(log) {}

void PermissionsModel::refresh() {
    const auto oldStatus = fullDiskAccess.get();
    if (fullDiskAccess.set(FullDiskAccessProbe::status(files_, user_)))
        log_.write(LogLevel::debug,
                   fmt::format("Full Disk Access: {} -> {}", name(oldStatus), name(fullDiskAccess.get())));
    const bool wasEnabled = finderExtension.get();
    if (finderExtension.set(isFinderExtensionEnabled_()))
        log_.write(LogLevel::debug,
                   fmt::format("Finder extension: {} -> {}", wasEnabled, finderExtension.get()));
}

} // namespace tidwen
