#pragma once

#include "platform/workspace.h"

#include <filesystem>
#include <functional>

namespace tidwen {

/// A volume's items as the desktop of this machine shows them. There is no System Settings that could be
/// opened for a Mac that does not run.
class VolumeWorkspace : public Workspace {
  public:
    /// Shows an item of this machine, chosen, in its folder.
    using RevealHere = std::function<Result(const std::filesystem::path&)>;

    /// `folder`: of this machine, which holds the volume.
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
