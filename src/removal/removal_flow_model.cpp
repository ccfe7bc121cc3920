#include "removal/removal_flow_model.h"

#include "quarantine/recovery.h"
#include "quarantine/trash_lock.h"
#include "removal/background_step.h"
#include "scan/default_selection.h"

#include <algorithm>

namespace tidwen {

std::string_view name(const Stage& stage) {
    constexpr std::string_view names[] = {"scanning",     "review",     "orphans", "report",  "idle",
                                          "startupItems", "installers", "history", "removing"};
    return names[stage.index()];
}

RemovalFlowModel::RemovalFlowModel(Services services, UserEnvironment user)
    : services_(std::move(services)),
      user_(std::move(user)),
      sweep_(services_.main, services_.treeQueue, services_.texts.language()) {}

RemovalFlowModel::~RemovalFlowModel() {
    scanStop_.requestStop();
}

bool RemovalFlowModel::isHome() const {
    return std::holds_alternative<stage::Idle>(stage_) || std::holds_alternative<stage::StartupItems>(stage_)
           || std::holds_alternative<stage::Installers>(stage_)
           || std::holds_alternative<stage::History>(stage_);
}

void RemovalFlowModel::enter(Stage next) {
    if (isHome()) home_ = stage_;
    stage_ = std::move(next);
    notify();
}

void RemovalFlowModel::fail(std::string message) {
    errorMessage_ = std::move(message);
    notify();
}

void RemovalFlowModel::start() {
    if (std::exchange(hasStarted_, true)) return;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, retention = services_.preferences.quarantineRetention.get()] {
            std::vector<Manifest> recovered;
            const auto lock = lockTrash(user, services.files);
            if (!lock) return recovered; // another Tidwen is at work there; what it leaves is not interrupted
            recovered = recoverInterruptedRemovals(user, services.files, services.clock, services.log);
            services.purge.purgeExpired(days(quarantineRetention(retention)), services.clock.now());
            return recovered;
        },
        [](RemovalFlowModel& self, std::vector<Manifest> recovered) {
            if (recovered.empty()) return;
            const auto newest =
                std::max_element(recovered.begin(), recovered.end(),
                                 [](const auto& a, const auto& b) { return a.createdAt < b.createdAt; });
            self.recoveryNotice_ = RecoveryNotice{*newest};
            self.notify();
        });
}

void RemovalFlowModel::show(Stage home) {
    if (!isHome()) return;
    stage_ = std::move(home);
    if (!isHome()) stage_ = stage::Idle{};
    notify();
}

void RemovalFlowModel::close() {
    const bool isReport = std::holds_alternative<stage::Report>(stage_);
    if (!isReport && !std::holds_alternative<stage::Review>(stage_)
        && !std::holds_alternative<stage::Orphans>(stage_))
        return;
    errorMessage_.reset();
    undoReport_.reset();
    selection_.clear();
    reviewTrees_.clear();
    reviewLists_.clear();
    stage_ = home_;
    notify();
    if (isReport && onReportDismissed) onReportDismissed();
}

void RemovalFlowModel::loadTargets(const std::vector<Path>& bundles) {
    if (!isHome() && !std::holds_alternative<stage::Review>(stage_)) return;
    errorMessage_.reset();
    std::vector<AppTarget> accepted;
    std::string failures;
    const auto addFailure = [&](const std::string& line) {
        failures += (failures.empty() ? "" : "\n") + line;
    };
    for (const auto& bundle : bundles) {
        if (auto target = services_.loader.load(bundle))
            accepted.push_back(std::move(*target));
        else
            addFailure(bundle.lastComponent() + ": " + services_.texts.text(errorKey(target.error())));
    }
    auto [allowed, refused] = services_.protectedApps.partition(std::move(accepted));
    for (const auto& target : refused)
        addFailure(services_.texts.text("error.protectedApp %@", {target.name}));
    if (allowed.empty())
        return fail(failures.empty() ? services_.texts.text("error.nothingToRemove") : std::move(failures));
    if (!failures.empty()) errorMessage_ = std::move(failures);
    scan(std::move(allowed));
}

void RemovalFlowModel::scan(std::vector<AppTarget> targets) {
    scanStop_ = StopSource();
    const auto total = static_cast<int>(targets.size());
    enter(stage::Scanning{targets.front().name, "", 0, total});
    const auto report = [this, alive = std::weak_ptr(alive_),
                         main = &services_.main](stage::Scanning progress) {
        main->post([this, alive, progress = std::move(progress)] {
            if (alive.expired() || !std::holds_alternative<stage::Scanning>(stage_)) return;
            stage_ = progress;
            notify();
        });
    };
    inBackground(
        *this, alive_, services_.background, services_.main,
        [makeScanner = services_.makeScanner, targets = std::move(targets), stop = scanStop_.token(), report,
         total] {
            const auto scanner = makeScanner();
            std::vector<ScanResult> results;
            for (const auto& target : targets) {
                const auto done = static_cast<int>(results.size());
                results.push_back(scanner->scan(target, stop, [&](const std::string& phase) {
                    report({target.name, phase, done, total});
                }));
            }
            return stop.stopRequested() ? std::optional<std::vector<ScanResult>>() : std::move(results);
        },
        [](RemovalFlowModel& self, std::optional<std::vector<ScanResult>> results) {
            if (results) self.review(std::move(*results));
        });
}

void RemovalFlowModel::scanOrphans() {
    if (!isHome()) return;
    scanStop_ = StopSource();
    errorMessage_.reset();
    sweep_.begin(services_.clock.now());
    enter(stage::Scanning{});
    const auto onFound = [this, alive = std::weak_ptr(alive_), main = &services_.main,
                          stop = scanStop_.token()](const std::vector<Trace>& found) {
        main->post([this, alive, stop, found] {
            if (!alive.expired() && !stop.stopRequested()) sweep_.add(found);
        });
    };
    inBackground(
        *this, alive_, services_.background, services_.main,
        [sweepOrphans = services_.sweepOrphans, stop = scanStop_.token(), onFound] {
            auto result = sweepOrphans(stop, onFound);
            return stop.stopRequested() ? std::optional<OrphanScanResult>() : std::move(result);
        },
        [](RemovalFlowModel& self, std::optional<OrphanScanResult> result) {
            if (!result) return;
            std::vector<Trace> traces;
            for (const auto& group : result->groups)
                traces.insert(traces.end(), group.traces.begin(), group.traces.end());
            self.sweep_.finish(std::move(traces));
            self.selection_.clear(); // whose they are nobody can confirm: the user chooses each
            self.mode_ = RemovalMode::uninstall;
            self.enter(stage::Orphans{std::move(*result)});
        });
}

void RemovalFlowModel::cancelScan() {
    if (!std::holds_alternative<stage::Scanning>(stage_)) return;
    scanStop_.requestStop();
    stage_ = home_;
    notify();
}

void RemovalFlowModel::review(std::vector<ScanResult> results) {
    selection_.clear();
    resetIneligible_.clear();
    mode_ = RemovalMode::uninstall;
    reviewLists_.clear();
    for (const auto& result : results) {
        for (const auto& trace : result.traces)
            if (takenByDefault(trace)) selection_.insert(trace.id);
        reviewLists_[result.target.bundleID] =
            std::make_shared<const LeftoverList>(result.traces, services_.texts.language());
    }
    buildReviewTrees();
    enter(stage::Review{std::move(results)});
}

void RemovalFlowModel::buildReviewTrees() {
    reviewTrees_.clear();
    for (const auto& [bundleID, list] : reviewLists_)
        reviewTrees_[bundleID] = buildTree(list, reviewFilter_);
}

void RemovalFlowModel::setReviewFilter(LeftoverFilter filter) {
    reviewFilter_ = std::move(filter);
    buildReviewTrees();
    notify();
}

} // namespace tidwen
