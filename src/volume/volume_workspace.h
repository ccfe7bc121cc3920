#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/workspace.h"

#include <filesystem>
#include <functional>
#include <string>

namespace tidwen {

/// Shows a volume's items on the desktop of this machine. System Settings cannot be opened for a Mac that is
/// not running.
class VolumeWorkspace : public Workspace {
  public:
    /// Selects an item of this machine in its folder.
    using RevealHere = std::function<Result(const std::filesystem::path&)>;

    /// `folder`: the folder of this machine that contains the volume.
    VolumeWorkspace(const FileSystem& files, std::filesystem::path folder, RevealHere revealHere)
        : files_(files), folder_(std::move(folder)), revealHere_(std::move(revealHere)) {}

    Result reveal(const Path& item) override;
    Result openSettingsPane(SystemSettingsLauncher::Pane pane) override;
    FileResult<std::string> iconOf(const Path& bundle) const override;

  private:
    const FileSystem& files_;
    std::filesystem::path folder_;
    RevealHere revealHere_;
};

} // namespace tidwen
