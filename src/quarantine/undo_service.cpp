#include "quarantine/undo_service.h"

#include "base/numbered_name.h"
#include "operations/screened_move.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/restore_order.h"

#include <fmt/core.h>
#include <set>
#include <utility>

namespace tidwen {

namespace {

constexpr const char* notInQuarantineKey = "failure.notInQuarantine";
constexpr const char* outerNotRestoredKey = "failure.outerNotRestored";

/// Gives every operation of a batch its own number: results are told apart by it, and a manifest may hold one
/// number twice.
class OperationNumbers {
  public:
    explicit OperationNumbers(const Manifest& manifest) {
        for (const auto& entry : manifest.entries)
            reserved_.insert(entry.operationID);
    }

    /// The number of the removal's own operation while it is still free.
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

/// launchd reads jobs from these folders alone. A manifest that asks for another file to be loaded, possibly
/// as root, was not written by a removal.
bool isLaunchFolder(const Path& folder, const Path& home, bool isSystemDomain) {
    if (folder == Path("/Library/LaunchDaemons") || folder == Path("/Library/LaunchAgents")) return true;
    return !isSystemDomain && folder == home / "Library/LaunchAgents";
}

/// One undo from start to end.
class UndoRun {
  public:
    UndoRun(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest)
        : ports_(ports), user_(user), policy_(user), manifest_(manifest), numbers_(manifest) {}

    UndoReport run() {
        const auto order = restoreOrder(manifest_.entries);
        for (const auto& step : order)
            if (!step.afterBatch) restore(step);
        queueJobs(true);
        runQueued(ports_.privilegedRunner);
        for (const auto& step : order)
            if (step.afterBatch) restore(step);
        queueJobs(false);
        runQueued(ports_.userRunner);
        removeEmptiedFolders();
        return std::move(report_);
    }

  private:
    struct Queued {
        RemovalOperation operation;
        std::string path; ///< named in the line of a failure
    };

    void restore(const RestoreStep& step) {
        const ManifestEntry& entry = *step.entry;
        ++report_.totalCount;
        const Path from(*entry.destination);
        const Path source(entry.source);
        if (isBlocked(from, source)) return fail(entry.source, {blockedBySafetyPolicyKey});
        if (isMissing(from) && finishEarlierUndo(from, source)) return void(++report_.restoredCount);
        if (isMissing(from)) return fail(entry.source, {notInQuarantineKey});

        if (mustWait(step)) return fail(entry.source, {outerNotRestoredKey});
        const operation::Move move{.source = from,
                                   .destination = restoreTarget(source, ports_.files, taken_)};
        taken_.insert(move.destination);
        if (isBlocked(from, move.destination)) return fail(entry.source, {blockedBySafetyPolicyKey});
        if (entry.requiresRoot) return queue(move, entry);
        if (const auto failure = screenedMove(move, ports_.files, policy_, ports_.log))
            return fail(entry.source, *failure);
        countRestored(move, source);
    }

    void countRestored(const operation::Move& move, const Path& oldPlace) {
        ++report_.restoredCount;
        if (move.destination != oldPlace) report_.renamed.push_back(move.destination);
    }

    /// Put back before the folder it lay in, it would take that folder's place. Inside the batch the order of
    /// the steps sees to that.
    bool mustWait(const RestoreStep& step) const {
        if (!step.outer || (step.outer->requiresRoot && step.entry->requiresRoot)) return false;
        return !isMissing(Path(*step.outer->destination));
    }

    /// Other faults are left to the move: an administrator may see what we cannot.
    bool isMissing(const Path& item) const {
        const auto info = ports_.files.info(item);
        return !info && info.error().fault == FileFault::missing;
    }

    /// An undo that was cut off between two devices may have set the item aside on its way to any of the
    /// names that were taken then. True when it arrived now.
    bool finishEarlierUndo(const Path& from, const Path& source) {
        for (int number = 1; number <= lastNumberTried; ++number) {
            const Path target = numberedName(source, number);
            const bool wasThere = ports_.files.exists(target);
            settleInterruptedMove(from, target, ports_.files, policy_);
            if (!wasThere || !isMissing(from)) return !wasThere && ports_.files.exists(target);
        }
        return false;
    }

    bool isBlocked(const Path& from, const Path& to) {
        if (!policy_.checkMove(from, to, ports_.files)) return false;
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

    void queueJobs(bool isSystemDomain) {
        for (const auto& entry : manifest_.entries) {
            if (entry.kind != ManifestEntryKind::bootout || entry.isSystemDomain != isSystemDomain) continue;
            if (!entry.plistPath) continue;
            const Path plist(*entry.plistPath);
            // System jobs are loaded in the batch that brings their files back, so they need not be there
            // yet.
            if (!isSystemDomain && !ports_.files.exists(plist)) continue;
            if (!isLaunchFolder(plist.parent(), user_.home, isSystemDomain)) {
                fail(plist.string(), {blockedBySafetyPolicyKey});
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
        const auto results = runner.run(operations);
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

    void fail(const std::string& path, const Message& reason) {
        report_.failures.push_back(fmt::format("{}: {}", path, ports_.texts.text(reason)));
    }

    /// Keeps the Trash tidy: the numbered folders go when nothing is left in them, and only then.
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
    OperationNumbers numbers_;
    std::set<Path> taken_;
    std::vector<Queued> queued_;
    UndoReport report_;
};

} // namespace

UndoReport UndoService::undo(const Manifest& manifest) {
    return UndoRun(ports_, user_, manifest).run();
}

Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken) {
    const auto isFree = [&](const Path& path) { return !taken.contains(path) && !files.exists(path); };
    for (int number = 1; number <= lastNumberTried; ++number)
        if (auto candidate = numberedName(source, number); isFree(candidate)) return candidate;
    const auto tail = " " + Uuid::random().string();
    return source.parent() / (shortened(source.stem(), longestFileName - tail.size()) + tail);
}

} // namespace tidwen
