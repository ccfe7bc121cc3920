#pragma once

#include "base/path.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tidwen {

/// Paths of this machine that lead into the volume's folder, as a shell completes them
/// ("sample/Applications/Pantry.app"), turned into the Mac's own.
class HostPaths {
  public:
    /// Without a volume the machine's paths are the Mac's already.
    explicit HostPaths(const std::optional<std::filesystem::path>& volume);

    /// Nothing when the item does not exist or lies outside the volume. Links on the way to the item are
    /// followed, the item itself is not.
    std::optional<Path> macPath(const std::string& hostPath) const;

  private:
    std::optional<std::filesystem::path> root_; ///< without links
};

} // namespace tidwen
