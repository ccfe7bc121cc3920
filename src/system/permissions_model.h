#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <functional>
#include <memory>

namespace tidwen {

/// Whether macOS lets this program read what it guards. Found out by opening files that only Full Disk Access
/// opens.
struct FullDiskAccessProbe {
    enum class Status { granted, denied, indeterminate };
    static Status status(const FileSystem& files, const UserEnvironment& user);
};
std::string_view name(FullDiskAccessProbe::Status status);

/// This program's own standing with the system. Belongs to the main thread; files are opened in the
/// background.
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

    /// Looks at both again and publishes what changed; the shell calls it while the program is in front.
    void refresh(std::function<void()> done = {});

  private:
    void publish(FullDiskAccessProbe::Status status, bool isExtensionEnabled);

    Ports ports_;
    UserEnvironment user_;
    IsFinderExtensionEnabled isFinderExtensionEnabled_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
