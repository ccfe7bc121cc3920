#pragma once

#include "app/models/app_icons.h"
#include "program/session.h"

#include <memory>
#include <optional>
#include <string>

namespace tidwen {

/// One open Mac with everything a window shows of it. Belongs to the main thread; ending it waits for the
/// step at hand of what runs.
class OpenMac {
  public:
    OpenMac(std::unique_ptr<OwnedMac> owned, std::string name, Executor& main);

    const std::string& name() const { return name_; } ///< of the volume, as people know it
    std::string userName() const;
    Session& session() { return session_; }
    AppIcons& icons() { return icons_; }
    RemovalFlowModel& flow() { return flow_; }
    StartupChores& chores() { return chores_; }
    const System& system() { return owned_->mac().system; }
    Executor& loop() { return loop_; }
    /// Sorts and names again, in another language.
    void arrange();
    /// A removal or an undo runs: it must end before this Mac is left.
    bool isBusy();

  private:
    std::unique_ptr<OwnedMac> owned_;
    std::string name_;
    Executor& loop_;
    AppIcons icons_;
    Session session_;
    RemovalFlowModel flow_;
    StartupChores chores_;
};

} // namespace tidwen
