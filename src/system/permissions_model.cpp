#include "system/permissions_model.h"

#include "base/background_step.h"
#include "base/path.h"
#include "platform/workspace.h"

#include <fmt/core.h>
#include <string>
#include <string_view>
#include <utility>

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

std::optional<Message> whyNothingMoves(const FileSystem& files, const UserEnvironment& user) {
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

void PermissionsModel::refresh(std::function<void()> done) {
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&files = ports_.files, user = user_, isEnabled = isFinderExtensionEnabled_] {
            return std::pair(FullDiskAccessProbe::status(files, user), isEnabled());
        },
        [done = std::move(done)](PermissionsModel& self, const auto& found) {
            self.publish(found.first, found.second);
            if (done) done();
        });
}

void PermissionsModel::publish(FullDiskAccessProbe::Status status, bool isExtensionEnabled) {
    const auto oldStatus = fullDiskAccess.get();
    if (fullDiskAccess.set(status))
        ports_.log.write(LogLevel::debug,
                         fmt::format("Full Disk Access: {} -> {}", name(oldStatus), name(status)));
    const bool wasEnabled = finderExtension.get();
    if (finderExtension.set(isExtensionEnabled))
        ports_.log.write(LogLevel::debug,
                         fmt::format("Finder extension: {} -> {}", wasEnabled, isExtensionEnabled));
}

} // namespace tidwen
