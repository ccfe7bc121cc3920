#include "app/shell/open_mac.h"

#include "base/executor.h"
#include "scan/applications/installed_bundles.h"

#include <utility>

namespace tidwen {

OpenMac::OpenMac(MacOpener::Opened opened, Executor& main)
    : opened_(std::move(opened)),
      loop_(main),
      icons_(opened_.mac->mac().system.workspace, main),
      session_(opened_.mac->mac(), main, InstalledBundles::Looks::many) {
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
    flow().arrange();
}

void OpenMac::onceThere(std::function<void()> act) {
    if (presence_)
        presence_->onceThere(std::move(act));
    else
        act();
}

void OpenMac::close() {
    session_.close();
    icons_.close();
    if (presence_) presence_->close();
}

void OpenMac::finishWork() {
    session_.finishWork();
    icons_.finishWork();
    if (presence_) presence_->finishWork();
    opened_.sample.reset();
}

void OpenMac::endWithProgram() {
    if (isBusy()) {
        close();
        finishWork();
    }
    opened_.sample.reset();
}

} // namespace tidwen
