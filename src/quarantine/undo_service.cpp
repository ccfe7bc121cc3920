#include "quarantine/undo_service.h"

#include "base/numbered_name.h"
#include "base/path_key.h"
#include "operations/screened_move.h"
#include "operations/stepwise_run.h"
#include "platform/file_absence.h"
#include "posix/copied_bytes.h"
#include "quarantine/held_items.h"
#include "quarantine/history.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/item_names.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/restore_order.h"
#include "quarantine/run_documents.h"
#include "quarantine/trash_lock.h"
#include "quarantine/unfinished_run.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>
#include <set>
#include <utility>

namespace tidwen {

namespace {

constexpr const char* notInQuarantineKey = "failure.notInQuarantine";
constexpr const char* severalOfTheNameKey = "failure.severalInQuarantine";
constexpr const char* strayCopyKey = "failure.undo.strayCopy %@";
constexpr const char* outerNotRestoredKey = "failure.outerNotRestored";
constexpr const char* moveUnfinishedKey = "failure.moveUnfinished";
constexpr const char* remainsInQuarantineKey = "failure.remainsInQuarantine";

/// An interrupted undo leaves at most a few items to settle. A manifest that implies many more is forged and
/// must not hold the lock for hours.
constexpr int settleAttemptsPerUndo = 5'000;

/// Gives each operation of a batch a unique number, which identifies its result; a manifest may contain a
/// number twice.
class OperationNumbers {
  public:
    explicit OperationNumbers(const Manifest& manifest) {
        for (const auto& entry : manifest.entries)
            reserved_.insert(entry.operationID);
    }

    /// The number of the removal's own operation if it is still free.
    int prefer(int number) { return number > 0 && given_.insert(number).second ? number : fresh(); }

    int fresh() {
        while (reserved_.contains(next_) || given_.contains(next_))
            ++next_;
        given_.insert(next_);
        return next_;
    }

  private:
    std::set<int> reserved_;
    std::set<int> given_;
    int next_ = 1;
};

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
          items_(items),
          steps_(control),
          numbers_(manifest),
          names_(ports.files),
          held_(user, ports.files) {}

    UndoReport run() {
        report_.mayHaveLost =
            std::ranges::any_of(manifest_.apps, [](const AppRecord& app) { return !app.bundleID.empty(); });
        const auto order = chosenSteps();
        steps_.expect(order.size() + chosenJobs().size());
        for (const auto& step : order)
            if (!step.afterBatch) restore(step);
        queueJobs(true);
        runQueued(ports_.privilegedRunner);
        for (const auto& step : order)
            if (step.afterBatch) restore(step);
        revealRemains();
        queueJobs(false);
        runQueued(ports_.userRunner);
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
        if (!ports_.runsJobs) return plan;
        std::set<std::string> returning;
        for (const auto& item : plan.items)
            if (!item.problem) returning.insert(item.oldPlace.string());
        for (const auto* job : chosenJobs())
            if (returning.contains(*job->plistPath) || ports_.files.exists(Path(*job->plistPath)))
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
        if (isMissing(from) && finishEarlierUndo(from, source)) return countRestored(from, source);
        if (isMissing(from)) return fail(entry.source, {moveUnfinishedKey});

        if (finishLinkedReturn(from, source)) return;
        if (mustWait(step)) return fail(entry.source, {outerNotRestoredKey});
        const operation::Move move{
            .source = from, .destination = restoreTarget(source, ports_.files, taken_, nextNumber_[source])};
        taken_.insert(move.destination);
        if (isBlocked(from, move.destination)) return fail(entry.source, {blockedBySafetyPolicyKey});
        if (const auto copy = strayCopy(from, move.destination, ports_.files))
            return fail(entry.source, {strayCopyKey, {copy->string()}});
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

    void countRestored(const operation::Move& move, const Path& oldPlace) {
        countRestored(move.source, oldPlace);
        if (move.destination != oldPlace) report_.renamed.push_back(move.destination);
    }

    /// The item is complete; remains in quarantine are reported as well.
    void countRestored(const Path& from, const Path& oldPlace) {
        ++report_.restoredCount;
        if (ports_.files.isSetAside(from)) fail(oldPlace.string(), {remainsInQuarantineKey});
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

    /// An interrupted undo between two devices may have set the item aside on its way to the old place or a
    /// numbered name. True if it has arrived now.
    bool finishEarlierUndo(const Path& from, const Path& source) {
        for (int number = 1; number <= lastNumberTried && settleAttempts_ < settleAttemptsPerUndo; ++number) {
            ++settleAttempts_;
            const Path target = numberedName(source, number);
            const bool wasThere = ports_.files.exists(target);
            const auto remains = settleInterruptedMove(from, target, ports_.files, policy_);
            if (!isMissing(from)) return false;
            // What is aside may be the remains of the item at the target, which had arrived.
            const bool isItsOwn =
                !ports_.files.isSetAside(from) || (remains && remains->fault != FileFault::busy);
            if (!wasThere || isItsOwn) return ports_.files.exists(target);
        }
        return false;
    }

    /// Without exclusive renames an interrupted undo may have left the item under both names. True if it has
    /// only the new one now.
    bool finishLinkedReturn(const Path& from, const Path& source) {
        for (int number = 1; number <= lastNumberTried && settleAttempts_ < settleAttemptsPerUndo; ++number) {
            const Path target = numberedName(source, number);
            if (!ports_.files.exists(target)) return false;
            ++settleAttempts_;
            if (!isOneItem(from, target, ports_.files)) continue;
            settleInterruptedMove(from, target, ports_.files, policy_);
            if (!isMissing(from)) return false;
            countRestored({.source = from, .destination = target}, source);
            return true;
        }
        return false;
    }

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

    void queueJobs(bool isSystemDomain) {
        // The batch that loads system jobs also puts their files back.
        std::set<std::string> returning;
        for (const auto& each : queued_)
            returning.insert(each.path);
        for (const auto* job : chosenJobs()) {
            const auto& entry = *job;
            if (entry.isSystemDomain != isSystemDomain) continue;
            const Path plist(*entry.plistPath);
            if (!returning.contains(*entry.plistPath) && !ports_.files.exists(plist)) continue;
            if (!isLaunchFolder(plist.parent(), user_.home, isSystemDomain)) {
                ports_.log.warning("Undo loads no job from {}", plist.string());
                continue;
            }
            queued_.push_back({{.id = numbers_.fresh(),
                                .kind = operation::Bootstrap{plist, isSystemDomain},
                                .requiresRoot = isSystemDomain,
                                .displayName = entry.launchLabel.value_or(plist.string()),
                                .bundleID = {}},
                               plist.string()});
        }
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
    const ItemChoice& items_;
    StepCounter steps_;
    OperationNumbers numbers_;
    ItemNames names_;
    HeldItems held_;
    std::set<Path> taken_;
    std::map<Path, int> nextNumber_; ///< by old place: all lower numbers are taken
    int settleAttempts_ = 0;
    std::vector<Queued> queued_;
    UndoReport report_;
};

/// Whether items of the run are at neither place and no later run holds them: an undo then names them.
bool hasLost(const RemovalHistoryEntry& entry, const UserEnvironment& user, const FileSystem& files) {
    if (entry.missingMoves == 0) return false;
    const auto runs = loadHistory(user, files, false);
    const auto found = std::ranges::find(runs, entry.root, &RemovalHistoryEntry::root);
    return found != runs.end() && found->missingMoves > 0;
}

} // namespace

UndoReport UndoService::undo(const Manifest& manifest, const ItemChoice& items, const StepControl& control) {
    return UndoRun(ports_, user_, manifest, items, control).run();
}

tl::expected<Manifest, Message> UndoService::whatIsLeft(const Path& root, Settling settling) const {
    const Message nothingLeft{"history.undo.nothingLeft %@", {root.lastComponent()}};
    if (auto entry = readHistoryEntry(root, ports_.files)) {
        const bool isLeft = entry->pendingMoves > 0 || (ports_.runsJobs && entry->loadableJobs > 0);
        if (!isLeft && !hasLost(*entry, user_, ports_.files)) return tl::unexpected(nothingLeft);
        return std::move(entry->manifest);
    }
    if (const auto journal = readJournal(root, ports_.files)) {
        HeldItems held(user_, ports_.files);
        // The original takes its own place; what was written there meanwhile gets a name beside it.
        if (settling == Settling::done)
            settleInterruptedMoves(journal->planned, StrayWrites::stayAside, ports_.files,
                                   PathPolicy(user_, ports_.files), held);
        auto seen = observe(journal->planned, ports_.files);
        dropHeldByLaterRuns(seen.missing, root, journal->createdAt, held);
        Manifest known{.createdAt = journal->createdAt,
                       .quarantineRoot = root,
                       .apps = journal->apps,
                       .entries = std::move(seen.entries)};
        // Unsettled and missing items are reported as failures.
        for (auto* unfound : {&seen.unsettled, &seen.missing})
            for (auto& entry : *unfound)
                if (!entry.destination || !ports_.files.exists(Path(*entry.destination)))
                    known.entries.push_back(std::move(entry));
        if (known.entries.empty()) return tl::unexpected(nothingLeft);
        return known;
    }
    const auto unreadable = readUnfinishedRun(root, ports_.files);
    return tl::unexpected(unreadable ? unreadable->whyNoUndo(ports_.texts) : nothingLeft);
}

tl::expected<UndoPlan, Message> UndoService::planRun(const Path& root, const ItemChoice& items) {
    return whatIsLeft(root, Settling::leftOut).map([&](const Manifest& manifest) {
        return UndoRun(ports_, user_, manifest, items, {}).plan();
    });
}

tl::expected<UndoReport, Message> UndoService::undoRun(const Path& root, const ItemChoice& items,
                                                       const StepControl& control) {
    const auto lock = lockTrash(user_, ports_.files);
    if (!lock) return tl::unexpected(describeNotBegun(lock.error(), ports_.texts));
    return whatIsLeft(root, Settling::done).map([&](const Manifest& manifest) {
        dropBegunCopies(manifest);
        auto report = undo(manifest, items, control);
        if (!readManifest(root, ports_.files)) finishInterruptedRun(manifest);
        return report;
    });
}

void UndoService::dropBegunCopies(const Manifest& manifest) const {
    const PathPolicy policy(user_, ports_.files);
    for (const auto& found : InterruptedReturns(ports_.files).of(manifest.entries))
        if (ports_.files.exists(found.from)) (void)settle(found, ports_.files, policy);
}

void UndoService::finishInterruptedRun(Manifest known) const {
    const Path root = known.quarantineRoot;
    const auto journal = readJournal(root, ports_.files);
    if (!journal || !observe(journal->planned, ports_.files).unsettled.empty()) return;
    known.recoveredAt = ports_.clock.now();
    if (const auto written = finishRun(known, ports_.files); !written)
        ports_.log.error("Could not write recovered manifest: {} ({})", root.string(),
                         failureKey(written.error().fault));
}

Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken) {
    int first = 1;
    return restoreTarget(source, files, taken, first);
}

Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken, int& first) {
    const auto isFree = [&](const Path& path) { return !taken.contains(path) && !files.exists(path); };
    for (first = std::max(first, 1); first <= lastNumberTried; ++first)
        if (auto candidate = numberedName(source, first); isFree(candidate)) return candidate;
    const auto tail = " " + Uuid::random().string();
    return source.parent() / (shortened(source.stem(), longestFileName - tail.size()) + tail);
}

} // namespace tidwen
