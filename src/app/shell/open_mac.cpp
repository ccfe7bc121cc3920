#include "app/shell/open_mac.h"

namespace tidwen {

OpenMac::OpenMac(std::unique_ptr<VolumeMac> volume, std::string name, Executor& main)
    : volume_(std::move(volume)),
      name_(std::move(name)),
      loop_(main),
      icons_(volume_->mac().system.workspace, main),
      session_(volume_->mac(), main, InstalledBundles::Looks::many),
      flow_(session_.removalServices(), volume_->mac().system.user),
      chores_(session_.startupServices(), volume_->mac().system.user) {}

std::string OpenMac::userName() const {
    return volume_->mac().system.user.home.lastComponent();
}

bool OpenMac::isBusy() {
    return std::holds_alternative<stage::Removing>(flow_.stage()) || flow_.isUndoing() || chores_.isUndoing()
           || session_.models().history().busyEntryID.get();
}

} // namespace tidwen
