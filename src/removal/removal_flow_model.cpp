#include "removal/removal_flow_model.h"

#include "base/background_step.h"
#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/text.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "platform/user_environment.h"
#include "quarantine/trash_lock.h"
#include "removal/findings.h"
#include "removal/former_applications.h"
#include "removal/protected_owners.h"
#include "removal/removal_subject.h"
#include "scan/applications/app_target.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "sweep/leftover_filter.h"
#include "sweep/orphan_scanner.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>
#include <variant>

namespace tidwen {

std::string_view name(const Stage& stage) {
    constexpr std::string_view names[] = {"scanning",     "review",     "orphans", "report",  "idle",
                                          "startupItems", "installers", "history", "removing"};
    return names[stage.index()];
}

RemovalFlowModel::RemovalFlowModel(Services services, UserEnvironment user)
    : services_(std::move(services)),
      user_(std::move(user)),
      sweep_(services_.main, services_.treeQueue, services_.texts),
      work_(services_.main, progress) {}

RemovalFlowModel::~RemovalFlowModel() {
    work_.stop();
}

bool RemovalFlowModel::isHome() const {
    return std::holds_alternative<stage::Idle>(stage_) || std::holds_alternative<stage::StartupItems>(stage_)
           || std::holds_alternative<stage::Installers>(stage_)
           || std::holds_alternative<stage::History>(stage_);
}

void RemovalFlowModel::enter(Stage next) {
    if (isHome()) home_ = stage_;
    stage_ = std::move(next);
    changed.emit(FlowChange::stage);
}

/// Whether the stage has a selection.
bool RemovalFlowModel::isChoosing() const {
    return isHome() || std::holds_alternative<stage::Review>(stage_)
           || std::holds_alternative<stage::Orphans>(stage_);
}

void RemovalFlowModel::forgetChoices() {
    choice_ = RemovalChoice();
    findInUse_ = nullptr;
    reviewTrees_.clear();
    reviewLists_.clear();
    protectionProblem_.reset();
}

std::optional<Message> RemovalFlowModel::retention() const {
    return describe(quarantineRetention(services_.preferences.quarantineRetention.get()));
}

bool RemovalFlowModel::takesTargets() const {
    return isHome() || std::holds_alternative<stage::Review>(stage_);
}

std::optional<std::string> RemovalFlowModel::errorMessage() const {
    std::optional<std::string> lines;
    for (const auto& problem : problems_)
        lines = (lines ? *lines + "\n" : "") + problem.text(services_.texts);
    return lines;
}

/// Publishes the reason, too.
RemovalFlowModel::Answer RemovalFlowModel::fail(Message reason) {
    problems_ = {{.reason = reason}};
    changed.emit(FlowChange::problems);
    return tl::unexpected(std::move(reason));
}

/// Why the stage forbids what was asked for.
RemovalFlowModel::Answer RemovalFlowModel::whyNot() const {
    const auto* key = std::holds_alternative<stage::Scanning>(stage_)   ? "error.stage.scanning"
                      : std::holds_alternative<stage::Removing>(stage_) ? "error.stage.removing"
                      : isUndoing_                                      ? "error.stage.undoing"
                                                                        : "error.stage.other";
    return tl::unexpected(Message{key});
}

RemovalFlowModel::Answer RemovalFlowModel::show(Stage home) {
    if (!isHome()) return whyNot();
    problems_.clear();
    forgetChoices();
    stage_ = std::move(home);
    if (!isHome()) stage_ = stage::Idle{};
    changed.emit(FlowChange::stage);
    return {};
}

RemovalFlowModel::Answer RemovalFlowModel::close() {
    const bool isReport = std::holds_alternative<stage::Report>(stage_);
    if (!isReport && !std::holds_alternative<stage::Review>(stage_)
        && !std::holds_alternative<stage::Orphans>(stage_))
        return whyNot();
    if (isUndoing_) return whyNot(); // its end is told on the report, and only `stop` ends it
    problems_.clear();
    undoReport_.reset();
    forgetChoices();
    stage_ = home_;
    changed.emit(FlowChange::stage);
    if (isReport && onReportDismissed) onReportDismissed();
    return {};
}

RemovalFlowModel::Answer RemovalFlowModel::loadTargets(const std::vector<Path>& bundles,
                                                       ProtectedTargets ofProtected,
                                                       const std::vector<GoneApplication>& gone) {
    if (!takesTargets()) return whyNot();
    problems_.clear();
    protectedTargets_.clear();
    if (bundles.empty() && gone.empty()) return fail({"error.nothingToRemove"});
    const auto control = work_.begin();
    auto cameFrom = stage_;
    const auto first = bundles.empty() ? gone.front().bundleID : bundles.front().stem();
    enter(stage::Scanning{first, 0, static_cast<int>(bundles.size() + gone.size()),
                          bundles.empty() ? Path() : bundles.front()});
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, bundles, gone, ofProtected] {
            auto loaded = tidwen::loadTargets(bundles, services.loader);
            if (!gone.empty()) add(gone, FormerApplications(services.files, user, services.loader), loaded);
            return checkProtection(std::move(loaded), services.readProtection(), ofProtected);
        },
        [stop = control.stop, cameFrom = std::move(cameFrom), gone = gone](RemovalFlowModel& self,
                                                                           TargetIntake intake) mutable {
            if (stop.stopRequested()) return;
            self.protectedTargets_ = std::move(intake.refused);
            self.problems_ = std::move(intake.failures);
            if (!intake.targets.empty()) return self.scan(std::move(intake.targets), std::move(gone));
            self.work_.end();
            self.stage_ = std::move(cameFrom);
            self.changed.emit(FlowChange::stage);
        });
    return {};
}

struct RemovalFlowModel::Reviewed {
    std::shared_ptr<const std::vector<ScanResult>> results;
    Findings findings;
    std::map<std::string, std::shared_ptr<const LeftoverList>> lists; ///< by bundle identifier
    std::optional<Message> protectionProblem;
    std::vector<Problem> notFound = {}; ///< applications that are gone and left nothing

    Reviewed(std::vector<ScanResult> scanned, const UserEnvironment& user, const Protection& protection,
             const Texts& texts)
        : protectionProblem(protection.problem) {
        std::map<std::string, std::vector<Trace>> traces; // two copies of one application share an identifier
        for (auto& result : scanned) {
            result.isProtected = protection.problem || protection.contains(result.target.bundleID);
            markProtectedOwners(result, protection);
            auto& ofTarget = traces[result.target.bundleID];
            ofTarget.insert(ofTarget.end(), result.traces.begin(), result.traces.end());
        }
        for (auto& [bundleID, ofTarget] : traces)
            lists[bundleID] = std::make_shared<const LeftoverList>(std::move(ofTarget), texts);
        results = std::make_shared<const std::vector<ScanResult>>(std::move(scanned));
        findings = Findings(results, user);
    }
};

void RemovalFlowModel::scan(std::vector<AppTarget> targets, std::vector<GoneApplication> gone) {
    auto earlier = std::exchange(choice_, RemovalChoice()); // of the review, if that asked for it
    forgetChoices();
    const auto control = work_.begin();
    const auto total = static_cast<int>(targets.size());
    enter(stage::Scanning{targets.front().name, 0, total, targets.front().bundleURL});
    const auto report = [this, alive = std::weak_ptr(alive_), main = &services_.main,
                         stop = control.stop](stage::Scanning next) {
        main->post([this, alive, stop, next = std::move(next)] {
            if (alive.expired() || stop.stopRequested()) return;
            stage_ = next;
            changed.emit(FlowChange::phase);
        });
    };
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, targets = std::move(targets), gone = std::move(gone), control,
         report, total] {
            const auto scanner = services.makeScanner(reachFor(targets));
            std::vector<ScanResult> results;
            std::vector<Problem> notFound;
            stage::Scanning scanning;
            scanning.total = total;
            for (; scanning.done < total; ++scanning.done) {
                const auto& target = targets[static_cast<std::size_t>(scanning.done)];
                scanning.name = target.name;
                scanning.bundle = target.bundleURL;
                report(scanning);
                auto result = scanner->scan(target, control.stop, targets, control.onStep);
                scanning.found += result.traces.size();
                for (const auto& trace : result.traces)
                    scanning.size.add(trace.sizeBytes, trace.isSizePartial);
                const auto absent = std::ranges::find(gone, target.bundleID, &GoneApplication::bundleID);
                if (isGone(target) && result.traces.empty() && absent != gone.end())
                    notFound.push_back({printable(target.bundleID), absent->otherwise});
                else
                    results.push_back(std::move(result));
            }
            Reviewed reviewed(std::move(results), user, services.readProtection(), services.texts);
            reviewed.notFound = std::move(notFound);
            return reviewed;
        },
        // A cancelled scan may complete before it notices.
        [stop = control.stop, earlier = std::move(earlier)](RemovalFlowModel& self, Reviewed reviewed) {
            if (!stop.stopRequested()) self.review(std::move(reviewed), earlier);
        });
}

RemovalFlowModel::Answer RemovalFlowModel::scanOrphans() {
    if (!isHome()) return whyNot();
    forgetChoices();
    const auto control = work_.begin();
    problems_.clear();
    sweep_.begin(services_.clock.now());
    enter(stage::Scanning{});
    const auto onFound = [this, alive = std::weak_ptr(alive_), main = &services_.main,
                          stop = control.stop](const std::vector<Trace>& found) {
        main->post([this, alive, stop, found] {
            if (!alive.expired() && !stop.stopRequested()) sweep_.add(found);
        });
    };
    struct Swept {
        std::shared_ptr<const OrphanScanResult> result;
        Findings findings;
    };
    inBackground(
        *this, alive_, services_.background, services_.main,
        [sweepOrphans = services_.sweepOrphans, control, onFound] {
            const auto result =
                std::make_shared<const OrphanScanResult>(sweepOrphans(control.stop, onFound, control.onStep));
            return Swept{result, Findings(result)};
        },
        [stop = control.stop](RemovalFlowModel& self, Swept swept) {
            if (!stop.stopRequested()) self.showOrphans(std::move(swept.result), std::move(swept.findings));
        });
    return {};
}

void RemovalFlowModel::cancelScan() {
    if (!std::holds_alternative<stage::Scanning>(stage_)) return;
    work_.stop();
    work_.end();
    forgetChoices();
    stage_ = home_;
    changed.emit(FlowChange::stage);
}

/// What was taken out before it was searched again stays out.
void RemovalFlowModel::review(Reviewed reviewed, const RemovalChoice& earlier) {
    work_.end();
    std::ranges::move(reviewed.notFound, std::back_inserter(problems_));
    if (reviewed.results->empty()) {
        stage_ = home_;
        return changed.emit(FlowChange::stage);
    }
    protectionProblem_ = std::move(reviewed.protectionProblem);
    reviewLists_ = std::move(reviewed.lists);
    buildReviewTrees();
    stage_ = stage::Review{std::move(reviewed.results)};
    choose(std::move(reviewed.findings), RemovalSubject::Kind::applications);
    choice_.selectAsBefore(earlier);
    changed.emit(FlowChange::stage);
}

/// Nothing is selected: the owner is uncertain, so the user chooses each item.
void RemovalFlowModel::showOrphans(std::shared_ptr<const OrphanScanResult> result, Findings findings) {
    work_.end();
    SharedTraces traces;
    traces.owners = {result};
    for (const auto& group : result->groups)
        for (const auto& trace : group.traces)
            traces.traces.push_back(&trace);
    sweep_.finish(std::move(traces));
    choose(std::move(findings), RemovalSubject::Kind::leftovers);
    enter(stage::Orphans{std::move(result)});
}

void RemovalFlowModel::choose(Findings findings, RemovalSubject::Kind kind) {
    choice_ = RemovalChoice(std::make_shared<const Findings>(std::move(findings)), kind);
}

void RemovalFlowModel::buildReviewTrees() {
    reviewTrees_.clear();
    for (const auto& [bundleID, list] : reviewLists_)
        reviewTrees_[bundleID] = buildTree(list, reviewFilter_);
}

void RemovalFlowModel::arrange() {
    sweep_.arrange();
    for (auto& [bundleID, list] : reviewLists_)
        if (list->language() != services_.texts.language())
            list = std::make_shared<const LeftoverList>(list->shared(), services_.texts);
    buildReviewTrees();
    changed.emit(FlowChange::listing);
}

RemovalFlowModel::Answer RemovalFlowModel::offer(const std::string& name, std::vector<Trace> traces,
                                                 FindInUse findInUse) {
    if (!isHome()) return whyNot();
    forgetChoices();
    problems_.clear();
    std::vector<Uuid> all;
    all.reserve(traces.size());
    for (const auto& trace : traces)
        all.push_back(trace.id);
    const auto kind = std::holds_alternative<stage::Installers>(stage_) ? RemovalSubject::Kind::installers
                      : std::holds_alternative<stage::StartupItems>(stage_)
                          ? RemovalSubject::Kind::startupItems
                          : RemovalSubject::Kind::applications;
    choose(Findings(name, std::move(traces)), kind);
    findInUse_ = std::move(findInUse);
    return select(all);
}

RemovalFlowModel::Answer RemovalFlowModel::setSelected(const std::vector<Uuid>& ids, bool selected) {
    if (!isChoosing()) return whyNot();
    choice_.setSelected(ids, selected);
    changed.emit(FlowChange::selection);
    return {};
}

RemovalFlowModel::Answer RemovalFlowModel::select(const std::vector<Uuid>& ids,
                                                  const std::vector<Uuid>& named) {
    if (!isChoosing()) return whyNot();
    choice_.select(ids, named);
    changed.emit(FlowChange::selection);
    return {};
}

RemovalFlowModel::Answer RemovalFlowModel::selectDefaults() {
    if (!isChoosing()) return whyNot();
    choice_.selectDefaults();
    changed.emit(FlowChange::selection);
    return {};
}

RemovalFlowModel::Answer RemovalFlowModel::setMode(RemovalMode mode) {
    if (!isChoosing()) return whyNot();
    choice_.setMode(mode);
    changed.emit(FlowChange::selection);
    return {};
}

void RemovalFlowModel::setReviewFilter(LeftoverFilter filter) {
    reviewFilter_ = std::move(filter);
    buildReviewTrees();
    changed.emit(FlowChange::listing);
}

} // namespace tidwen
