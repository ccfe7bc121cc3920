#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/permissions/full_disk_access.h"

#include <functional>
#include <memory>

namespace tidwen {

/// This program's own permissions. Main thread only; files are opened in the background.
class PermissionsModel {
  public:
    struct Ports {
        const FileSystem& files;
        Executor& main;
        Executor& background;
        Log& log;
    };
    using IsFinderExtensionEnabled = std::function<bool()>; ///< called in the background

    PermissionsModel(Ports ports, UserEnvironment user, IsFinderExtensionEnabled isFinderExtensionEnabled)
        : ports_(ports),
          user_(std::move(user)),
          isFinderExtensionEnabled_(std::move(isFinderExtensionEnabled)) {}

    Property<FullDiskAccessProbe::Status> fullDiskAccess{FullDiskAccessProbe::Status::indeterminate};
    Property<bool> finderExtension{false};

    /// Checks both again and publishes changes; the shell calls it while the program is in front.
    void refresh(std::function<void()> done = {});

  private:
    void publish(FullDiskAccessProbe::Status status, bool isExtensionEnabled);

    Ports ports_;
    UserEnvironment user_;
    IsFinderExtensionEnabled isFinderExtensionEnabled_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen
