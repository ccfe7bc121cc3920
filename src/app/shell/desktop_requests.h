#pragma once

#include "app/shell/open_mac.h"
#include "base/path.h"
#include "platform/workspace.h"

#include <QString>
#include <functional>
#include <memory>

namespace tidwen {

/// What the desktop is asked to show. It may take its time, so it is not asked on the main thread.
class DesktopRequests {
  public:
    /// `mac` outlives it; `say` tells why something could not be shown.
    DesktopRequests(OpenMac& mac, std::function<void(const QString&)> say)
        : mac_(mac), say_(std::move(say)) {}

    /// In the file manager.
    void reveal(const Path& item);
    /// In System Settings.
    void openPane(SystemSettingsLauncher::Pane pane);

  private:
    void ask(const std::function<Workspace::Result(Workspace&)>& request);

    OpenMac& mac_;
    std::function<void(const QString&)> say_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
