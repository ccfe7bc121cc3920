#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/process_runner.h"
#include "platform/workspace.h"

#include <string>
#include <vector>

namespace tidwen {

/// The desktop of the running Mac, through /usr/bin/open.
class ToolWorkspace : public Workspace {
  public:
    ToolWorkspace(const FileSystem& files, ProcessRunner& processes) : files_(files), processes_(processes) {}

    Result reveal(const Path& item) override;
    Result openSettingsPane(SystemSettingsLauncher::Pane pane) override;
    FileResult<std::string> iconOf(const Path& bundle) const override;

  private:
    Result open(const std::vector<std::string>& arguments);

    const FileSystem& files_;
    ProcessRunner& processes_;
};

} // namespace tidwen
