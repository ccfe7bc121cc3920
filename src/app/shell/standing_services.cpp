#include "app/shell/standing_services.h"

#include "base/path.h"
#include "system/request_inbox.h"
#include "system/uninstall_service.h"

#ifdef __APPLE__
#include "macos/services_provider.h"
#endif

namespace tidwen {

#ifndef __APPLE__
/// Only macOS has a Services menu.
class ServicesProvider {};
#endif

StandingServices::StandingServices(Session& session, const OwnBundle& bundle, Window window)
    : session_(session), bundle_(bundle), window_(std::move(window)) {
    auto& models = session_.models();
    inbox_ = models.inboxWatcher(bundle_, [this](const RequestInbox::Drained& asked) { serve(asked); });
    inbox_->start();
    auto& catcher = models.trashCatcher();
    catcher.presentMainWindow = [this] {
        window_.present();
        serveCleanUps();
    };
    following_ = models.takesRequests().observe([this](bool) { serveCleanUps(); });
    catcher.install();
    // The extension offers its entry only while the program left a file for it.
    extension_ = models.permissions().finderExtension.observe([this](const bool& isOn) {
        session_.background().post([&mac = session_.mac(), bundle = bundle_, isOn] {
            (void)requestInbox(mac, bundle).setFinderGate(isOn);
        });
    });
    models.permissions().refresh();
#ifdef __APPLE__
    services_ = std::make_unique<ServicesProvider>([this](const std::vector<Path>& selection) {
        auto inbox = requestInbox(session_.mac(), bundle_);
        UninstallService(inbox, session_.mac().system.log, [this] { inbox_->look(); }).handOver(selection);
    });
#endif
}

StandingServices::~StandingServices() {
    session_.models().trashCatcher().presentMainWindow = {};
}

void StandingServices::refresh() {
    inbox_->look();
    session_.models().permissions().refresh();
}

bool StandingServices::isNeeded() const {
    return session_.models().trashCatcher().isWatching();
}

void StandingServices::serve(const RequestInbox::Drained& asked) {
    window_.present();
    if (!asked.paths.empty()) window_.lookAt(asked.paths);
    if (const auto refusals = asked.refusals(); !refusals.empty()) window_.say(refusals);
}

/// All that wait at once, for the search for one would end that for the one before.
void StandingServices::serveCleanUps() {
    auto& models = session_.models();
    RequestInbox::Drained chosen;
    while (models.takesRequests().get())
        if (const auto next = models.trashCatcher().takePendingCleanUp())
            chosen.paths.emplace_back(next->path);
        else
            break;
    if (!chosen.isEmpty()) serve(chosen);
}

} // namespace tidwen
