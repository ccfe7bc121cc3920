// What can be removed, and what of it is chosen.

#include "removal/chosen_items.h"
#include "removal/removal_flow_model.h"
#include "removal/staying_applications.h"
#include "scan/matching/default_selection.h"

#include <algorithm>
#include <iterator>

namespace tidwen {

void RemovalFlowModel::offer(const std::string& name, std::vector<Trace> traces) {
    if (!isHome()) return;
    forgetChoices();
    errorMessage_.reset();
    std::set<Uuid> all;
    for (const auto& trace : traces)
        all.insert(trace.id);
    offer_ = ScanResult{};
    offer_->target.name = name;
    offer_->traces = std::move(traces);
    select(all);
}

void RemovalFlowModel::forEachFound(
    const std::function<void(const AppTarget&, const std::vector<Trace>&)>& visit) const {
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        for (const auto& result : review->results)
            visit(result.target, result.traces);
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage_))
        for (const auto& group : orphans->result.groups) {
            AppTarget gone;
            gone.bundleID = group.bundleID;
            gone.name = group.name;
            visit(gone, group.traces);
        }
    if (offer_ && isHome()) visit(offer_->target, offer_->traces);
}

std::vector<ScanResult> RemovalFlowModel::found() const {
    if (const auto* review = std::get_if<stage::Review>(&stage_)) return review->results;
    std::vector<ScanResult> all;
    forEachFound([&](const AppTarget& target, const std::vector<Trace>& traces) {
        ScanResult result;
        result.target = target;
        result.traces = traces;
        all.push_back(std::move(result));
    });
    return all;
}

void RemovalFlowModel::setSelected(const std::set<Uuid>& ids, bool selected) {
    if (selected) refusedByDefault_.reset();
    forEachFound([&](const AppTarget&, const std::vector<Trace>& traces) {
        for (const auto& trace : traces) {
            if (!ids.contains(trace.id)) continue;
            if (!selected)
                selection_.erase(trace.id);
            else if (isEligible(trace, mode_))
                selection_.insert(trace.id);
        }
    });
    notify();
}

void RemovalFlowModel::select(const std::set<Uuid>& ids, const std::set<Uuid>& named) {
    selection_.clear();
    named_ = named;
    resetIneligible_.clear();
    setSelected(ids, true);
}

void RemovalFlowModel::selectDefaults() {
    // A reset takes data alone.
    const auto isTaken = [this](const Trace& trace, const ScanResult& result) {
        const bool goesAlone = mode_ == RemovalMode::reset && !staysInMode(trace, mode_);
        return goesAlone ? takenByDefault(trace) : takenByDefault(trace, result);
    };
    std::set<Uuid> ids;
    for (const auto& result : found())
        for (const auto& trace : result.traces)
            if (isTaken(trace, result)) ids.insert(trace.id);
    select(ids);
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        refusedByDefault_ = whyNotByDefault(review->results);
    // What a reset keeps is chosen again on the way back from it.
    forEachFound([&](const AppTarget&, const std::vector<Trace>& traces) {
        for (const auto& trace : traces)
            if (ids.contains(trace.id) && staysInMode(trace, mode_)) resetIneligible_.insert(trace.id);
    });
}

/// Going to reset and back gives the selection back that was there.
void RemovalFlowModel::setMode(RemovalMode mode) {
    const auto* review = std::get_if<stage::Review>(&stage_);
    if (!review || mode == mode_) return;
    mode_ = mode;
    if (mode == RemovalMode::uninstall) {
        selection_.insert(resetIneligible_.begin(), resetIneligible_.end());
        resetIneligible_.clear();
    } else {
        for (const auto& result : review->results)
            for (const auto& trace : result.traces)
                if (!isEligible(trace, mode) && selection_.erase(trace.id) > 0)
                    resetIneligible_.insert(trace.id);
    }
    notify();
}

std::vector<RemovalTarget> RemovalFlowModel::chosenTargets() const {
    std::vector<RemovalTarget> targets;
    forEachFound([&](const AppTarget& target, const std::vector<Trace>& traces) {
        targets.push_back({target, {}, false});
        std::copy_if(traces.begin(), traces.end(), std::back_inserter(targets.back().traces),
                     [&](const Trace& trace) { return selection_.contains(trace.id); });
    });
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        leaveToThoseThatStay(stayingApplications(review->results, targets, mode_), targets, named_);
    takeEachItemOnce(targets);
    return targets;
}

std::vector<Trace> RemovalFlowModel::leftInPlace() const {
    const auto* shown = std::get_if<stage::Report>(&stage_);
    if (!shown) return tidwen::leftInPlace(found(), chosenTargets(), mode_);
    std::vector<Trace> left;
    for (const auto& each : shown->report.left)
        left.insert(left.end(), each.traces.begin(), each.traces.end());
    return left;
}

Unseen RemovalFlowModel::unseen() const {
    if (const auto* review = std::get_if<stage::Review>(&stage_)) return unseenIn(review->results);
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage_))
        return {.unreadableLocations = orphans->result.unreadableLocations,
                .leftOut = orphans->result.leftOut};
    return {};
}

std::vector<Path> RemovalFlowModel::skippedNames() const {
    std::set<Path> names; // several applications may claim one item
    if (const auto* review = std::get_if<stage::Review>(&stage_))
        for (const auto& result : review->results)
            names.insert(result.skippedNames.begin(), result.skippedNames.end());
    if (const auto* orphans = std::get_if<stage::Orphans>(&stage_))
        names.insert(orphans->result.skippedNames.begin(), orphans->result.skippedNames.end());
    return {names.begin(), names.end()};
}

RemovalSubject RemovalFlowModel::subjectKind() const {
    if (std::holds_alternative<stage::Orphans>(stage_)) return RemovalSubject::leftovers;
    if (std::holds_alternative<stage::Installers>(stage_)) return RemovalSubject::installers;
    if (std::holds_alternative<stage::StartupItems>(stage_)) return RemovalSubject::startupItems;
    return RemovalSubject::applications;
}

std::string RemovalFlowModel::subject() const {
    if (std::holds_alternative<stage::Report>(stage_) || std::holds_alternative<stage::Removing>(stage_))
        return reportSubject_;
    return subjectText(subjectKind(), mode_, chosenTargets(), services_.texts);
}

RemovalSummary RemovalFlowModel::summary() const {
    std::vector<Trace> traces;
    for (const auto& target : chosenTargets())
        traces.insert(traces.end(), target.traces.begin(), target.traces.end());
    return summarize(traces, services_.texts.language());
}

} // namespace tidwen
