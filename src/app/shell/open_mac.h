#pragma once

#include "app/models/app_icons.h"
#include "app/shell/mac_opener.h"
#include "app/shell/volume_presence.h"
#include "base/executor.h"
#include "platform/system.h"
#include "program/session.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidwen {

/// One open Mac with everything a window shows of it. Belongs to the main thread. Ending it waits for the
/// step at hand of what runs and for what is being read; where the disk may not answer, see `LeftMacs`.
class OpenMac {
  public:
    OpenMac(MacOpener::Opened opened, Executor& main);

    const std::string& name() const { return opened_.name; } ///< of a volume, as people know it
    std::string userName() const;
    bool isRunningMac() { return !opened_.mac->mac().volume; }
    Session& session() { return session_; }
    AppIcons& icons() { return icons_; }
    RemovalFlowModel& flow() { return session_.models().removal(); }
    StartupChores& chores() { return session_.models().chores(); }
    const System& system() { return opened_.mac->mac().system; }
    Executor& loop() { return loop_; }
    /// Sorts and names again, in another language.
    void arrange();
    /// Null for the running Mac, which does not go away.
    VolumePresence* presence() { return presence_ ? &*presence_ : nullptr; }
    /// Acts once it is sure that this Mac is still the one that was opened: what is about to be changed must
    /// be what is shown. Where it is not, nothing is done, and `presence` tells. Keep what `act` uses alive,
    /// or ask in it.
    void onceThere(std::function<void()> act);
    /// A removal or an undo runs: it must end before this Mac is left.
    bool isBusy() { return session_.models().isBusy(); }
    /// Stops what only reads; nothing of it may be shown or asked any more.
    void close();
    /// Waits for what is still under way, which the disk may hold up for ever, and removes the temporary
    /// sample: on any thread, after `close`.
    void finishWork();
    /// Waits for the step at hand of what is moved, if anything is, and for nothing that is only read. Only
    /// the end of the program may follow.
    void endWithProgram();

  private:
    MacOpener::Opened opened_;
    Executor& loop_;
    AppIcons icons_;
    std::optional<VolumePresence> presence_;
    Session session_;
};

} // namespace tidwen
