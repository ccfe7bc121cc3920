#include "app/shell/open_mac.h"

#include "base/executor.h"
#include "scan/applications/installed_bundles.h"

#include <variant>

namespace tidwen {

OpenMac::OpenMac(MacOpener::Opened opened, Executor& main)
    : opened_(std::move(opened)),
      loop_(main),
      icons_(opened_.mac->mac().system.workspace, main),
      session_(opened_.mac->mac(), main, InstalledBundles::Looks::many),
      flow_(session_.removalServices(), opened_.mac->mac().system.user),
      chores_(session_.startupServices(), opened_.mac->mac().system.user) {
    if (const auto& folder = opened_.mac->mac().volume)
        presence_.emplace(opened_.mac->mac().system.files, *folder, main);
    (void)session_.followSettings();
}

std::string OpenMac::userName() const {
    return opened_.mac->mac().system.user.home.lastComponent();
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
