#include "removal/renewed_check.h"

#include "base/message.h"
#include "base/text.h"
#include "operations/screened_move.h"
#include "removal/chosen_items.h"
#include "removal/target_intake.h"
#include "scan/matching/default_selection.h"
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

void refuseReclaimedLeftovers(std::vector<RemovalTarget>& targets, const FindReclaimed& findReclaimed) {
    std::vector<EarlierFinds> finds;
    finds.reserve(targets.size());
    for (const auto& target : targets)
        finds.push_back({target.target.bundleID, target.traces});
    const auto reclaimed = findReclaimed(finds);
    for (auto& target : targets)
        for (const auto& trace : target.traces)
            if (const auto claim = reclaimed.find(trace.id); claim != reclaimed.end())
                target.refusals.insert(*claim);
}

void refuseWhatIsInUse(std::vector<RemovalTarget>& targets, const FindInUse& findInUse) {
    if (!findInUse) return;
    const auto inUse = findInUse();
    for (auto& target : targets)
        for (const auto& trace : target.traces)
            if (const auto* path = movedPath(trace.action))
                if (const auto found = inUse.find(*path); found != inUse.end())
                    target.refusals.emplace(trace.id, found->second);
}

/// Why an item that was undoubtedly the application's is so no longer; the user may have chosen one that was
/// in doubt before.
std::optional<Message> whyInDoubt(const Trace& trace, const ScanResult& now) {
    const auto isSame = [&](const Trace& other) { return other.action == trace.action; };
    const auto found = std::ranges::find_if(now.traces, isSame);
    if (found == now.traces.end()) return Message{changedSinceKey};
    if (!isUndoubted(trace) || isUndoubted(*found)) return std::nullopt;
    if (found->contestedBy) return describeReclaimed(found->contestedBy);
    return Message{found->mayHoldOthers ? "failure.mayHoldOthersSince" : "failure.ownerUnsureSince"};
}

/// Another application may have been installed, even into what was found, or a job's file rewritten.
void refuseWhatAScanWouldNotTake(RemovalTarget& target, const RenewedGrounds& grounds) {
    const auto now = grounds.scan(target.target);
    for (const auto& trace : target.traces)
        if (trace.category != TraceCategory::application)
            if (auto why = whyInDoubt(trace, now)) target.refusals.emplace(trace.id, std::move(*why));
}

} // namespace

void refuseWhatChanged(std::vector<RemovalTarget>& targets, RemovalMode mode, RemovalSubject::Kind kind,
                       const RenewedGrounds& grounds) {
    using enum RemovalSubject::Kind;
    for (auto& target : targets) {
        if (const auto& problem = grounds.protection.problem)
            refuseAll(target, *problem);
        else if (auto reason = isGone(target.target) ? std::nullopt : whyNotStill(target, mode, grounds))
            refuseAll(target, *reason);
        for (const auto& trace : target.traces)
            if (isAnotherItem(trace, grounds.files))
                target.refusals.emplace(trace.id, Message{changedSinceKey});
        if (kind == applications && target.refusals.size() < target.traces.size())
            refuseWhatAScanWouldNotTake(target, grounds);
    }
    if (kind == leftovers) refuseReclaimedLeftovers(targets, grounds.findReclaimed);
    refuseWhatIsInUse(targets, grounds.findInUse);
}

} // namespace tidwen
