#include "program/session.h"

#include "base/step_progress.h"
#include "base/stop_token.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/residue_scanner.h"
#include "sweep/orphan_scanner.h"

#include <utility>

namespace tidwen {

Session::Session(Mac& mac, Executor& main, InstalledBundles::Looks looks)
    : mac_(mac),
      main_(main),
      bundles_(mac.system.files, mac.system.signatures, mac.system.user, looks),
      loader_(mac.system.files, mac.system.signatures),
      protectedApps_(mac.system.defaults),
      tags_(mac.system.defaults, mac.system.texts),
      preferences_(mac.system.defaults),
      executor_({mac.system.files, mac.userRunner, mac.privilegedRunner, mac.system.log}),
      undo_(undoPorts(mac), mac.system.user),
      purge_(mac.system.files, mac.system.user, mac.administrator, mac.system.log, mac.trashForRoot),
      audit_(mac.system.files, mac.system.user, mac.system.texts),
      models_({mac, main, background_, preferences_, tags_, protectedApps_, undo_, purge_, audit_,
               [this] { return removalServices(); }, [this] { return startupServices(); }}) {}

void Session::reloadSettings() {
    preferences_.reload();
    tags_.reload();
    protectedApps_.reload();
}

bool Session::followSettings() {
    settingsFollower_.emplace(mac_.system.defaults, main_, [this] { reloadSettings(); });
    return settingsFollower_->isFollowing();
}

void Session::close() {
    settingsFollower_.reset();
    models_.close();
}

void Session::finishWork() {
    models_.finishReading();
    background_.finish();
    treeQueue_.finish();
}

UndoService::Ports undoPorts(Mac& mac) {
    const bool isRunning = !mac.volume;
    return {mac.system.files, mac.privilegedRunner, mac.userRunner, mac.system.log, mac.system.clock,
            isRunning,        &mac.system.launchd};
}

RemovalFlowModel::Services Session::removalServices() {
    auto& system = mac_.system;
    return {.files = system.files,
            .loader = loader_,
            .makeScanner = [this](BundleReach reach) { return makeScanner(reach); },
            .sweepOrphans =
                [this](const auto& stop, const auto& onFound, const auto& onStep) {
                    // Reread: another process may have changed the protection since this session began.
                    return sweepOrphans(ProtectedApps(mac_.system.defaults).bundleIDs(), stop, onFound,
                                        onStep);
                },
            .findReclaimed =
                [this](const auto& finds) {
                    return orphanScanner().reclaimed(bundles_, finds,
                                                     ProtectedApps(mac_.system.defaults).bundleIDs());
                },
            .running = system.runningApplications,
            .executor = executor_,
            .undo = undo_,
            .rights = mac_.rights(),
            .audit = audit_,
            .readProtection = [this] { return readProtection(mac_.system.defaults); },
            .preferences = preferences_,
            .texts = system.texts,
            .clock = system.clock,
            .log = system.log,
            .main = main_,
            .background = background_,
            .treeQueue = treeQueue_};
}

StartupChores::Services Session::startupServices() {
    const auto& system = mac_.system;
    return {.files = system.files,
            .undo = undo_,
            .purge = purge_,
            .preferences = preferences_,
            .texts = system.texts,
            .clock = system.clock,
            .log = system.log,
            .main = main_,
            .background = background_};
}

std::shared_ptr<const BundleSnapshot> Session::lookAtBundles() {
    return seen_ = bundles_.look(InstalledBundles::Reach::usual);
}

std::unique_ptr<ResidueScanner> Session::makeScanner(BundleReach reach) {
    const auto& system = mac_.system;
    const bool hasLooked = seen_ && reach == BundleReach::usual;
    auto bundles = hasLooked ? std::exchange(seen_, nullptr) : bundles_.look(reach);
    return std::make_unique<ResidueScanner>(ResidueScanner::Ports{system.files, system.receipts,
                                                                  system.keychain, system.systemExtensions,
                                                                  system.texts, system.log},
                                            system.user, std::move(bundles), mac_.rights());
}

OrphanScanResult Session::sweepOrphans(const std::set<std::string>& protectedIDs, const StopToken& stop,
                                       const OrphanScanner::OnFound& onFound, const OnStep& onStep) const {
    const auto& system = mac_.system;
    InstalledBundles installed(system.files, system.signatures, system.user);
    return orphanScanner().scan(installed, protectedIDs, stop, onFound, onStep);
}

OrphanScanner Session::orphanScanner() const {
    const auto& system = mac_.system;
    return {
        {system.files, system.receipts, system.runningApplications, system.log},
        system.user,
        [&known = system.knownApplications](const std::string& bundleID) { return known.isKnown(bundleID); }};
}

} // namespace tidwen
