#include "app/shell/open_mac.h"

namespace tidwen {

OpenMac::OpenMac(std::unique_ptr<OwnedMac> owned, std::string name, Executor& main)
    : owned_(std::move(owned)),
      name_(std::move(name)),
      loop_(main),
      icons_(owned_->mac().system.workspace, main),
      session_(owned_->mac(), main, InstalledBundles::Looks::many),
      flow_(session_.removalServices(), owned_->mac().system.user),
      chores_(session_.startupServices(), owned_->mac().system.user) {}

std::string OpenMac::userName() const {
    return owned_->mac().system.user.home.lastComponent();
}

void OpenMac::arrange() {
    auto& models = session_.models();
    models.homeGrid().arrange();
    models.installers().setOrder(models.installers().order());
    flow_.arrange();
}

bool OpenMac::isBusy() {
    return std::holds_alternative<stage::Removing>(flow_.stage()) || flow_.isUndoing() || chores_.isUndoing()
           || session_.models().history().busyEntryID.get();
}

} // namespace tidwen
