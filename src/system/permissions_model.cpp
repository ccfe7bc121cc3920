#include "system/permissions_model.h"

#include "base/background_step.h"

#include <fmt/core.h>
#include <utility>

namespace tidwen {

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
