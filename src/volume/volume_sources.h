#pragma once

#include "base/log.h"
#include "base/path.h"
#include "platform/applications.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/known_applications.h"
#include "platform/launchd.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

/// The ports that a running Mac answers with tools, answered from the files in which macOS stores the data.
namespace tidwen {

/// "/private/var/db/receipts": one property list and one bill of materials per package.
class VolumeReceipts : public Receipts {
  public:
    explicit VolumeReceipts(const FileSystem& files) : files_(files) {}
    std::vector<std::string> packageIDs() const override;
    std::optional<Receipt> read(const std::string& packageID) const override;

  private:
    const FileSystem& files_;
};

/// "/Library/SystemExtensions/db.plist".
class VolumeSystemExtensions : public SystemExtensions {
  public:
    explicit VolumeSystemExtensions(const FileSystem& files) : files_(files) {}
    std::vector<SystemExtensionRecord> list() const override;

  private:
    const FileSystem& files_;
};

/// "/private/var/db/com.apple.xpc.launchd/disabled.plist" and "disabled.<uid>.plist".
class VolumeLaunchd : public Launchd {
  public:
    VolumeLaunchd(FileSystem& files, const UserEnvironment& user) : files_(files), user_(user) {}
    std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const override;
    /// Writes the override file; no job is loaded on a volume.
    tl::expected<void, LaunchdError> setEnabled(bool on, const std::string& label, const Path& plist,
                                                bool isSystemDomain) override;

  private:
    FileSystem& files_;
    const UserEnvironment& user_;
};

/// A keychain's items are encrypted by the running Mac and cannot be read here.
class VolumeKeychain : public Keychain {
  public:
    std::vector<KeychainEntry> entries() const override { return {}; }
    std::int32_t deleteItems(KeychainItemClass, const std::string&) override { return keychainItemNotFound; }
};

/// Nothing runs on a volume.
class VolumeRunningApplications : public RunningApplications {
  public:
    bool isRunning(const std::string&) const override { return false; }
    bool quit(const std::string&, std::chrono::milliseconds) override { return true; }
};

/// Each Mac rebuilds the records of Launch Services; on a volume there are only the bundles themselves, which
/// callers check first.
class VolumeKnownApplications : public KnownApplications {
  public:
    bool isKnown(const std::string&) const override { return false; }
};

} // namespace tidwen
