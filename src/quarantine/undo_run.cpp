#include "quarantine/undo_run.h"

#include "base/message.h"
#include "base/path.h"
#include "base/path_key.h"
#include "base/step_progress.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "operations/stepwise_run.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/launchd.h"
#include "platform/user_environment.h"
#include "posix/comparison_limit.h"
#include "posix/copied_bytes.h"
#include "quarantine/arrived_rests.h"
#include "quarantine/earlier_undo.h"
#include "quarantine/held_items.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/item_names.h"
#include "quarantine/manifest.h"
#include "quarantine/not_undone.h"
#include "quarantine/operation_numbers.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/restore_order.h"
#include "quarantine/restore_target.h"
#include "quarantine/run_items.h"
#include "scan/applications/launch_item.h"
#include "scan/policy/path_policy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr const char* notInQuarantineKey = "failure.notInQuarantine";
constexpr const char* partlyPurgedKey = "failure.partlyPurged";
constexpr const char* severalOfTheNameKey = "failure.severalInQuarantine";
constexpr const char* strayCopyKey = "failure.undo.strayCopy %@";
constexpr const char* restKey = "failure.undo.rest %@";
constexpr const char* outerNotRestoredKey = "failure.outerNotRestored";
constexpr const char* moveUnfinishedKey = "failure.moveUnfinished";
constexpr const char* remainsInQuarantineKey = "failure.remainsInQuarantine";

/// launchd loads jobs only from these folders. A manifest that requests another file, possibly as root, is
/// forged.
bool isLaunchFolder(const Path& folder, const Path& home, bool isSystemDomain) {
    const auto is = [key = pathKey(folder)](const Path& place) { return key == pathKey(place); };
    if (is(Path("/Library/LaunchDaemons")) || is(Path("/Library/LaunchAgents"))) return true;
    return !isSystemDomain && is(home / "Library/LaunchAgents");
}

/// One complete undo.
class UndoRun {
  public:
    UndoRun(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest,
            const ItemChoice& items, const StepControl& control)
        : ports_(ports),
          user_(user),
          policy_(user, ports.files),
          manifest_(manifest),
          items_(withWholeReceipts(items, manifest)),
          steps_(control),
          numbers_(manifest),
          names_(ports.files),
          held_(user, ports.files),
          earlier_(ports.files, policy_) {
        for (const auto& entry : manifest.entries)
            if (entry.kind == ManifestEntryKind::move && entry.destination)
                quarantined_.try_emplace(entry.source, *entry.destination);
    }

    UndoReport run() {
        report_.lost = notUndone(manifest_);
        const auto order = chosenSteps();
        steps_.expect(order.size() + chosenJobs().size());
        for (const auto& step : order)
            if (!step.afterBatch) restore(step);
        queueJobs(true);
        runQueued(ports_.privilegedRunner);
        for (const auto& step : order)
            if (step.afterBatch) restore(step);
        revealRemains();
        tellRests();
        queueJobs(false);
        runQueued(ports_.userRunner);
        if (!ports_.runsJobs) countJobs();
        steps_.finish();
        removeEmptiedFolders();
        return std::move(report_);
    }

    UndoPlan plan() {
        UndoPlan plan;
        for (const auto& step : chosenSteps()) {
            if (isBack(step))
                ++plan.alreadyBack;
            else
                plan.items.push_back(planned(step));
        }
        for (const auto& item : plan.items)
            if (!item.problem) tellDestination(item.oldPlace, *item.destination);
        for (const auto* job : chosenJobs())
            if (job->isSystemDomain && isToLoad(*job))
                plan.jobs.push_back(job->launchLabel.value_or(job->source));
        return plan;
    }

  private:
    bool isChosen(const std::string& oldPlace) const { return items_.empty() || items_.contains(oldPlace); }

    std::vector<RestoreStep> chosenSteps() const {
        auto order = restoreOrder(manifest_.entries);
        std::erase_if(order, [&](const RestoreStep& step) { return !isChosen(step.entry->source); });
        return order;
    }

    bool isBack(const RestoreStep& step) const {
        const Path from(*step.entry->destination);
        return isMissing(from) && !ports_.files.isSetAside(from)
               && ports_.files.exists(Path(step.entry->source));
    }

    /// What `restore` would do, without changing anything.
    PlannedReturn planned(const RestoreStep& step) {
        const Path from(*step.entry->destination), source(step.entry->source);
        PlannedReturn result{
            .oldPlace = source, .quarantined = from, .requiresRoot = step.entry->requiresRoot};
        const bool isOnItsWay =
            ports_.files.isSetAside(from) || (ports_.files.isSetAside(source) && !isAnothers(from, source));
        const bool isGone = isMissing(from) && !isOnItsWay;
        const bool outerStays =
            step.outer && !isChosen(step.outer->source) && !isMissing(Path(*step.outer->destination));
        if (isGone)
            result.problem = {notFoundKey(from)};
        else if (isBlocked(from, source))
            result.problem = {blockedBySafetyPolicyKey};
        else if (outerStays)
            result.problem = {outerNotRestoredKey};
        if (result.problem) return result;
        result.destination = isMissing(from) // and on its way
                                 ? source
                                 : restoreTarget(source, ports_.files, taken_, nextNumber_[source]);
        taken_.insert(*result.destination);
        if (const auto copy =
                isMissing(from) ? std::nullopt : strayCopy(from, *result.destination, ports_.files))
            result.problem = {strayCopyKey, {copy->string()}};
        return result;
    }

    const char* notFoundKey(const Path& quarantined) {
        if (isPartlyPurged(quarantined, manifest_.quarantineRoot, ports_.files)) return partlyPurgedKey;
        return names_.find(manifest_.quarantineRoot, quarantined).isAmbiguous ? severalOfTheNameKey
                                                                              : notInQuarantineKey;
    }

    struct Queued {
        RemovalOperation operation;
        std::string path; ///< reported with a failure
    };

    void restore(const RestoreStep& step) {
        const ManifestEntry& entry = *step.entry;
        ++report_.totalCount;
        const Path from(*entry.destination);
        const Path source(entry.source);
        // Checked first: the policy is more expensive, and a manifest may name any number of missing items.
        if (isMissing(from) && !ports_.files.isSetAside(from)) return restoreMissing(from, source);
        if (steps_.isStopped()) return fail(entry.source, {stoppedKey});
        if (isBlocked(from, source)) return fail(entry.source, {blockedBySafetyPolicyKey});
        const auto arrived = isMissing(from) ? earlier_.finishMove(from, source) : std::nullopt;
        if (arrived) return countRestored({.source = from, .destination = *arrived}, source);
        if (isMissing(from) && earlier_.rest()) {
            ++report_.alreadyBack;
            --report_.totalCount;
            return fail(entry.source, {restKey, {earlier_.rest()->string()}});
        }
        if (isMissing(from)) return fail(entry.source, {moveUnfinishedKey});

        if (const auto place = earlier_.finishLink(from, source))
            return countRestored({.source = from, .destination = *place}, source);
        if (mustWait(step)) return fail(entry.source, {outerNotRestoredKey});
        const operation::Move move{
            .source = from, .destination = restoreTarget(source, ports_.files, taken_, nextNumber_[source])};
        taken_.insert(move.destination);
        tellDestination(source, move.destination);
        if (isBlocked(from, move.destination)) return fail(entry.source, {blockedBySafetyPolicyKey});
        if (const auto copy = strayCopy(from, move.destination, ports_.files)) {
            if (steps_.isStopped()) return fail(entry.source, {stoppedKey}); // it was not compared to its end
            return fail(entry.source, {strayCopyKey, {copy->string()}});
        }
        if (entry.requiresRoot) return queue(move, entry);
        steps_.begin(kindName(move), entry.source);
        const CopiedBytes copied([this](std::uint64_t bytes) { steps_.tellCopied(bytes); });
        if (const auto failure = screenedMove(move, ports_.files, policy_, ports_.log))
            return fail(entry.source, *failure);
        countRestored(move, source);
    }

    /// Not in quarantine: already put back, set aside on its way, or missing.
    void restoreMissing(const Path& from, const Path& source) {
        if (ports_.files.exists(source)) {
            ++report_.alreadyBack;
            --report_.totalCount;
        } else if (!ports_.files.isSetAside(source) || isAnothers(from, source)) {
            fail(source.string(), {notFoundKey(from)});
        } else if (isBlocked(from, source)) {
            fail(source.string(), {blockedBySafetyPolicyKey});
        } else if (reveal(source)) {
            ++report_.restoredCount;
        } else {
            fail(source.string(), {moveUnfinishedKey});
        }
    }

    /// Whether what lies aside beside the old place of an item belongs to another run, which has the item.
    bool isAnothers(const Path& from, const Path& source) {
        const auto holder = held_.holder(source.string());
        return holder && *holder != from;
    }

    /// Renames what a move between disks left aside to its own name, or a free one beside it.
    bool reveal(const Path& source) {
        const auto real = ports_.files.resolveParent(source);
        const auto places = real ? ports_.files.revealRemains(*real) : tl::unexpected(real.error());
        if (!places) return false;
        for (const auto& place : *places)
            if (place != *real) report_.renamed.push_back(place);
        return true;
    }

    /// Writes into an item during its removal are put beside it.
    void revealRemains() {
        for (const auto& entry : manifest_.entries) {
            if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
            if (!isChosen(entry.source)) continue;
            const Path source(entry.source);
            if (!ports_.files.isSetAside(source) || !isMissing(Path(*entry.destination))) continue;
            if (isAnothers(Path(*entry.destination), source)) continue;
            if (isBlocked(Path(*entry.destination), source)) continue;
            if (!reveal(source)) fail(entry.source, {moveUnfinishedKey});
        }
    }

    /// What a removal that was cut off left beside an old place was written to since, or is not removable.
    void tellRests() {
        for (const auto& [oldPlace, rest] : restsBesideOldPlaces(manifest_.entries, ports_.files))
            if (isChosen(oldPlace)) fail(oldPlace, {restOfRemovalKey, {rest.string()}});
        std::set<std::string> told;
        for (const auto& failure : report_.failures)
            told.insert(failure.item);
        for (const auto& [oldPlace, rest] : restsInQuarantine(manifest_.entries, ports_.files)) {
            const bool isBack = ports_.files.exists(Path(oldPlace));
            if (isChosen(oldPlace) && !(isBack && told.contains(oldPlace)))
                fail(oldPlace, {isBack ? restKey : restOfRemovalKey, {rest.string()}});
        }
    }

    void countRestored(const operation::Move& move, const Path& oldPlace) {
        tellDestination(oldPlace, move.destination);
        countRestored(move.source, oldPlace);
        if (move.destination != oldPlace) report_.renamed.push_back(move.destination);
    }

    /// The item is complete; remains in quarantine are reported as well.
    void countRestored(const Path& from, const Path& oldPlace) {
        ++report_.restoredCount;
        if (ports_.files.isSetAside(from) || !arrivedRests(from, ports_.files).empty())
            fail(oldPlace.string(), {remainsInQuarantineKey});
    }

    /// Put back before its enclosing folder, it would take that folder's place. Within the batch the order of
    /// steps is sufficient.
    bool mustWait(const RestoreStep& step) const {
        if (!step.outer) return false;
        const bool isInBatch = step.outer->requiresRoot && isChosen(step.outer->source);
        if (isInBatch && step.entry->requiresRoot) return false;
        return !isMissing(Path(*step.outer->destination));
    }

    /// Other faults are left to the move: an administrator may have access.
    bool isMissing(const Path& item) const { return tidwen::isMissing(ports_.files, item); }

    bool isBlocked(const Path& from, const Path& to) {
        if (policy_.checkMove(from, to, ports_.files)) return false;
        ports_.log.warning("Undo move blocked by path policy: {}", to.string());
        return true;
    }

    void queue(operation::Move move, const ManifestEntry& entry) {
        queued_.push_back({{.id = numbers_.prefer(entry.operationID),
                            .kind = std::move(move),
                            .requiresRoot = true,
                            .displayName = entry.source,
                            .bundleID = {}},
                           entry.source});
    }

    /// Jobs whose property lists this undo puts back, or an earlier one did.
    std::vector<const ManifestEntry*> chosenJobs() const {
        std::vector<const ManifestEntry*> jobs;
        for (const auto& entry : manifest_.entries)
            if (entry.kind == ManifestEntryKind::bootout && entry.plistPath && isChosen(*entry.plistPath))
                jobs.push_back(&entry);
        return jobs;
    }

    void tellDestination(const Path& oldPlace, const Path& destination) {
        (destination == oldPlace ? returning_ : besides_).insert(oldPlace.string());
    }

    /// Whether the job of this property list is to be loaded now that the list comes back, or, where jobs
    /// run, because it came back earlier: whether it was loaded since is unknown. What another program put in
    /// the list's place is no job of this run.
    bool isToLoad(const ManifestEntry& job) {
        const auto& plist = *job.plistPath;
        if (besides_.contains(plist)) return false;
        if (!returning_.contains(plist) && !(ports_.runsJobs && ports_.files.exists(Path(plist))))
            return false;
        if (!isLaunchFolder(Path(plist).parent(), user_.home, *job.isSystemDomain)) {
            ports_.log.warning("Undo loads no job from {}", plist);
            return false;
        }
        return !isSwitchedOff(job);
    }

    /// One that was switched off stays off.
    bool isSwitchedOff(const ManifestEntry& job) {
        if (ports_.launchd && job.launchLabel) {
            const bool isSystemDomain = *job.isSystemDomain;
            auto& overrides = overrides_[isSystemDomain ? 1 : 0];
            if (!overrides) overrides = ports_.launchd->disabledOverrides(isSystemDomain);
            if (const auto known = overrides->find(*job.launchLabel); known != overrides->end())
                return known->second;
        }
        const auto quarantined = quarantined_.find(*job.plistPath);
        const bool isThere = quarantined != quarantined_.end() && ports_.files.exists(quarantined->second);
        return declaresDisabled(budgeted_, isThere ? quarantined->second : Path(*job.plistPath));
    }

    void queueJobs(bool isSystemDomain) {
        if (!ports_.runsJobs) return; // their property lists are all that is needed
        // The batch that loads system jobs also puts their files back.
        std::set<std::string> queued;
        for (const auto& each : queued_)
            queued.insert(each.path);
        for (const auto* job : chosenJobs()) {
            const auto& entry = *job;
            if (entry.isSystemDomain != isSystemDomain || !isToLoad(entry)) continue;
            const Path plist(*entry.plistPath);
            if (!queued.contains(*entry.plistPath) && !ports_.files.exists(plist)) continue;
            queued_.push_back({{.id = numbers_.fresh(),
                                .kind = operation::Bootstrap{plist, isSystemDomain},
                                .requiresRoot = isSystemDomain,
                                .displayName = entry.launchLabel.value_or(plist.string()),
                                .bundleID = {}},
                               plist.string()});
        }
    }

    /// The jobs that start with the Mac again.
    void countJobs() {
        for (const auto* job : chosenJobs())
            if (job->isSystemDomain && ports_.files.exists(Path(*job->plistPath)) && isToLoad(*job))
                ++report_.relaunchedJobs;
    }

    void runQueued(PrivilegedRunner& runner) {
        const auto queued = std::exchange(queued_, {});
        if (queued.empty()) return;
        std::vector<RemovalOperation> operations;
        operations.reserve(queued.size());
        for (const auto& each : queued)
            operations.push_back(each.operation);
        const auto results = runStepwise(runner, operations, steps_);
        for (std::size_t i = 0; i < queued.size(); ++i) {
            const auto* move = std::get_if<operation::Move>(&queued[i].operation.kind);
            if (i < results.size() && results[i].succeeded)
                move ? countRestored(*move, Path(queued[i].path)) : void(++report_.relaunchedJobs);
            else
                fail(queued[i].path, i < results.size()
                                         ? results[i].failureReason.value_or(Message{"failure.unknown"})
                                         : Message{"failure.unknown"});
        }
    }

    void fail(const std::string& path, const Message& reason) { report_.failures.push_back({path, reason}); }

    /// Removes the numbered folders that are empty.
    void removeEmptiedFolders() {
        for (const auto& entry : manifest_.entries) {
            if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
            Path folder = Path(*entry.destination).parent();
            while (folder != manifest_.quarantineRoot && folder.isWithin(manifest_.quarantineRoot)
                   && ports_.files.removeEmptyDirectory(folder))
                folder = folder.parent();
        }
    }

    UndoService::Ports& ports_;
    const UserEnvironment& user_;
    PathPolicy policy_;
    const Manifest& manifest_;
    const ItemChoice items_;
    StepCounter steps_;
    OperationNumbers numbers_;
    ItemNames names_;
    HeldItems held_;
    EarlierUndo earlier_;
    std::set<Path> taken_;
    std::map<Path, int> nextNumber_; ///< by old place: all lower numbers are taken
    std::vector<Queued> queued_;
    std::map<std::string, Path> quarantined_;    ///< by old place
    std::set<std::string> returning_;            ///< old places to which this undo brings their items
    std::set<std::string> besides_;              ///< old places that are taken, so that it does not
    const BudgetedFiles budgeted_{ports_.files}; ///< for property lists, which a forged record may repeat
    std::array<std::optional<std::map<std::string, bool>>, 2> overrides_; ///< of the user, of the system
    UndoReport report_;
};

} // namespace

UndoReport undoItems(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest,
                     const ItemChoice& items, const StepControl& control) {
    const ComparisonLimit limit(control.stop);
    return UndoRun(ports, user, manifest, items, control).run();
}

UndoPlan planUndo(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest,
                  const ItemChoice& items) {
    const ComparisonLimit limit({});
    return UndoRun(ports, user, manifest, items, {}).plan();
}

} // namespace tidwen
