#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "scan/applications/launch_item.h"

#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

class CodeSignatures;

/// The application to remove, as described by its bundle. Immutable; later steps read only this.
struct AppTarget {
    Path bundleURL = {};       ///< as chosen, symbolic links not resolved
    std::string bundleID = {}; ///< never empty, letter case as declared
    std::string name = {};     ///< the name shown to people; may be empty when the bundle says so
    std::optional<std::string> teamID = {};
    std::optional<std::string> version = {};
    std::optional<std::string> executableName = {};
    std::vector<std::string> appGroups = {};
    std::vector<LaunchItem> embeddedLaunchdItems = {}; ///< agents, then daemons
    std::vector<std::string> loginItemBundleIDs = {};  ///< sorted

    friend bool operator==(const AppTarget&, const AppTarget&) = default;
};

/// Why a bundle is refused as a target.
enum class AppTargetLoaderError {
    notAnApplication,
    unreadableBundle,
    missingBundleIdentifier,
    systemApplication,
    selfTarget,
};

/// "error.notAnApplication" and so on.
std::string_view errorKey(AppTargetLoaderError error);

/// This program's own bundle identifier: never a target, and never matched as a leftover.
inline constexpr std::string_view tidwenBundleID = "com.corvella.tidwen";

/// Loads bundles as targets. Read-only; thread-safe.
class AppTargetLoader {
  public:
    AppTargetLoader(const FileSystem& files, const CodeSignatures& signatures)
        : files_(files), signatures_(signatures) {}

    tl::expected<AppTarget, AppTargetLoaderError> load(const Path& bundle) const;

  private:
    const FileSystem& files_;
    const CodeSignatures& signatures_;
};

} // namespace tidwen
