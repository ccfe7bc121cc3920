#include "removal/renewed_check.h"

#include "base/message.h"
#include "base/text.h"
#include "operations/screened_move.h"
#include "removal/chosen_items.h"
#include "removal/target_intake.h"
#include "scan/matching/trace.h"
#include "scan/policy/path_policy.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tidwen {

namespace {

bool isAnotherItem(const Trace& trace, const FileSystem& files) {
    const auto* path = movedPath(trace.action);
    return path && isAnother(*path, trace.found, files);
}

/// Why nothing of an application may be taken any more.
std::optional<Message> whyNotStill(const RemovalTarget& target, RemovalMode mode,
                                   const RenewedGrounds& grounds) {
    const auto& found = target.target;
    const auto now = grounds.loader.load(found.bundleURL);
    const auto isReplaced = [&](const Trace& trace) {
        return trace.category == TraceCategory::application && isAnotherItem(trace, grounds.files);
    };
    if (!now || now->bundleID != found.bundleID || std::ranges::any_of(target.traces, isReplaced))
        return Message{"failure.applicationChanged %@", {printable(found.name)}};
    if (grounds.protection.contains(now->bundleID)) return describeProtected(*now);
    if (mode == RemovalMode::reset || !takesTheApplication(target)) return std::nullopt;
    const auto immovable = whyNotRemovable(*now, grounds.files, PathPolicy(grounds.user, grounds.files),
                                           grounds.user, grounds.rights);
    return immovable ? std::optional(immovable->describe(*now)) : std::nullopt;
}

void refuseAll(RemovalTarget& target, const Message& reason) {
    for (const auto& trace : target.traces)
        target.refusals.insert_or_assign(trace.id, reason);
}

/// Installers and startup items have no owner that could have come back.
bool hasLostItsOwner(const RemovalTarget& target) {
    return isGone(target.target) && !target.target.bundleID.empty();
}

void refuseWhatIsClaimed(std::vector<RemovalTarget>& targets, RemovalSubject::Kind kind,
                         const FindReclaimed& findReclaimed) {
    std::vector<EarlierFinds> finds;
    for (const auto& target : targets)
        if (hasLostItsOwner(target))
            finds.push_back({target.target.bundleID, target.traces,
                             kind == RemovalSubject::Kind::leftovers ? EarlierFinds::By::sweep
                                                                     : EarlierFinds::By::identifier});
    if (finds.empty()) return;
    const auto reclaimed = findReclaimed(finds);
    for (auto& target : targets)
        for (const auto& trace : target.traces)
            if (const auto claim = reclaimed.find(trace.id); claim != reclaimed.end())
                target.refusals.insert(*claim);
}

} // namespace

void refuseWhatChanged(std::vector<RemovalTarget>& targets, RemovalMode mode, RemovalSubject::Kind kind,
                       const RenewedGrounds& grounds) {
    for (auto& target : targets) {
        if (const auto& problem = grounds.protection.problem)
            refuseAll(target, *problem);
        else if (auto reason = isGone(target.target) ? std::nullopt : whyNotStill(target, mode, grounds))
            refuseAll(target, *reason);
        for (const auto& trace : target.traces)
            if (isAnotherItem(trace, grounds.files))
                target.refusals.emplace(trace.id, Message{changedSinceKey});
    }
    refuseWhatIsClaimed(targets, kind, grounds.findReclaimed);
}

} // namespace tidwen
