#pragma once

#include "base/path.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tidwen {

/// Converts paths of this machine inside the volume's folder, as a shell completes them
/// ("sample/Applications/Pantry.app"), to Mac paths.
class HostPaths {
  public:
    /// Without a volume this machine's paths are Mac paths.
    explicit HostPaths(const std::optional<std::filesystem::path>& volume);

    /// nullopt when the item does not exist or is outside the volume. Links in parent folders are followed,
    /// the item itself is not.
    std::optional<Path> macPath(const std::string& hostPath) const;

  private:
    std::optional<std::filesystem::path> root_; ///< resolved
};

} // namespace tidwen
