#pragma once

#include "base/log.h"
#include "base/observable.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <functional>

namespace tidwen {

/// Whether macOS lets this program read what it guards. Found out by opening files that only Full Disk Access
/// opens.
struct FullDiskAccessProbe {
    enum class Status { granted, denied, indeterminate };
    static Status status(const FileSystem& files, const UserEnvironment& user);
};
std::string_view name(FullDiskAccessProbe::Status status);

/// This program's own standing with the system. Belongs to the main thread.
class PermissionsModel {
  public:
    using IsFinderExtensionEnabled = std::function<bool()>;

    PermissionsModel(const FileSystem& files, UserEnvironment user,
                     IsFinderExtensionEnabled isFinderExtensionEnabled, Log& log);

    Property<FullDiskAccessProbe::Status> fullDiskAccess{FullDiskAccessProbe::Status::indeterminate};
    Property<bool> finderExtension{false};

    /// Looks at both again and publishes what changed; the shell calls it while the program is in front.
    void refresh();

  private:
    const FileSystem& files_;
    UserEnvironment user_;
    IsFinderExtensionEnabled isFinderExtensionEnabled_;
    Log& log_;
};

} // namespace tidwen
