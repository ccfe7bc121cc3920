#include "removal/removal_executor.h"

#include "base/message.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "operations/screened_move.h"
#include "operations/stepwise_run.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "quarantine/arrived_rests.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_documents.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

std::vector<RemovalOperation> operationsOfLevel(const std::vector<RemovalOperation>& plan,
                                                bool requiresRoot) {
    std::vector<RemovalOperation> level;
    std::copy_if(plan.begin(), plan.end(), std::back_inserter(level),
                 [&](const RemovalOperation& each) { return each.requiresRoot == requiresRoot; });
    return level;
}

/// The steps that may be run, and the results of those that must not.
std::pair<std::vector<RemovalOperation>, std::vector<OperationResult>>
judged(const std::vector<RemovalOperation>& plan) {
    std::vector<RemovalOperation> permitted;
    std::vector<OperationResult> refused;
    for (const auto& each : plan)
        if (each.refusal)
            refused.push_back(OperationResult::failure(each.id, *each.refusal));
        else
            permitted.push_back(each);
    return {std::move(permitted), std::move(refused)};
}

/// The batch's shell may have died after the step or still be running it, so its result does not describe the
/// disk.
bool isAnswerLost(const OperationResult& result) {
    return result.failureReason
           && (result.failureReason->key == "failure.noResult"
               || result.failureReason->key == "failure.timedOut");
}

/// The results for the manifest, corrected by what is on disk: an item in quarantine must be listed to be
/// restored, and so must an unloaded job whose property list is there, whatever result was reported.
class ObservedResults {
  public:
    ObservedResults(const std::vector<RemovalOperation>& plan, const FileSystem& files) : files_(files) {
        for (const auto& each : plan) {
            operations_.emplace(each.id, &each);
            if (const auto* move = std::get_if<operation::Move>(&each.kind))
                moveByTrace_.emplace(each.traceID, move);
        }
    }

    std::vector<OperationResult> of(std::vector<OperationResult> results) const {
        for (auto& result : results)
            if (!result.succeeded) result.succeeded = wasDone(result);
        return results;
    }

    /// An item that was moved and no longer exists cannot be restored, so its move has failed.
    void failWhatVanished(std::vector<OperationResult>& results, const Message& reason) const {
        for (auto& result : results) {
            const auto* operation = result.succeeded ? find(result.operationID) : nullptr;
            const auto* move = operation ? std::get_if<operation::Move>(&operation->kind) : nullptr;
            if (move && isMissing(files_, move->destination))
                result = OperationResult::failure(result.operationID, reason);
        }
    }

    /// A move whose shell timed out may still be executed.
    bool mayStillHappen(const OperationResult& result) const {
        const auto* operation = find(result.operationID);
        const auto* move = operation ? std::get_if<operation::Move>(&operation->kind) : nullptr;
        return move && operation->requiresRoot && !result.succeeded && result.failureReason
               && result.failureReason->key == "failure.timedOut" && !wasMade(*move);
    }

  private:
    const RemovalOperation* find(int id) const {
        const auto found = operations_.find(id);
        return found == operations_.end() ? nullptr : found->second;
    }

    bool wasMade(const operation::Move& move) const {
        return files_.exists(move.destination) && !files_.exists(move.source);
    }

    bool wasDone(const OperationResult& result) const {
        const auto* operation = find(result.operationID);
        if (!operation) return false;
        if (const auto* move = std::get_if<operation::Move>(&operation->kind))
            return result.failureReason == Message{putBackByAnotherKey}
                       ? files_.exists(move->destination)
                       : result.failureReason != Message{"failure.destinationOccupied"} && wasMade(*move);
        if (!std::holds_alternative<operation::Bootout>(operation->kind) || !isAnswerLost(result))
            return false;
        const auto propertyList = moveByTrace_.find(operation->traceID);
        return propertyList != moveByTrace_.end() && wasMade(*propertyList->second);
    }

    const FileSystem& files_;
    std::unordered_map<int, const RemovalOperation*> operations_;
    std::map<Uuid, const operation::Move*> moveByTrace_;
};

std::set<Path> restsBeside(const ManifestEntry& entry, const FileSystem& files) {
    if (entry.kind != ManifestEntryKind::move) return {};
    const auto rests = arrivedRests(Path(entry.source), files);
    return {rests.begin(), rests.end()};
}

/// Moves that recovery must complete: an item is at neither place, or some of it could not be removed from
/// the old one.
std::vector<ManifestEntry> unfinishedMoves(const std::vector<ManifestEntry>& planned,
                                           const std::set<Path>& earlierRests, const FileSystem& files) {
    auto unfinished = observe(planned, files).unsettled;
    for (const auto& entry : planned)
        if (!std::ranges::includes(earlierRests, restsBeside(entry, files))) unfinished.push_back(entry);
    return unfinished;
}

std::vector<std::string> irreversibleKinds(const RemovalReport& report, const std::set<Uuid>& emptyResets) {
    std::set<int> succeeded;
    for (const auto& result : report.results)
        if (result.succeeded) succeeded.insert(result.operationID);
    std::set<std::string> kinds;
    for (const auto& each : report.operations) {
        const bool isReset = std::holds_alternative<operation::ResetPermissions>(each.kind);
        const bool deletes = std::holds_alternative<operation::DeleteKeychainItem>(each.kind);
        if ((deletes || (isReset && !emptyResets.contains(each.traceID))) && succeeded.contains(each.id))
            kinds.emplace(kindName(each.kind));
    }
    return {kinds.begin(), kinds.end()};
}

} // namespace

FileResult<RemovalReport> RemovalExecutor::execute(const std::vector<RemovalOperation>& plan,
                                                   const QuarantineLayout& layout,
                                                   const std::vector<AppRecord>& apps, RemovalMode mode,
                                                   Timestamp date, const StepControl& control,
                                                   const std::set<Uuid>& emptyResets) {
    const auto [permitted, refused] = judged(plan);
    const RemovalJournal journal{.createdAt = date,
                                 .quarantineRoot = layout.root,
                                 .apps = apps,
                                 .planned = manifestEntries(permitted)};
    if (const auto written = beginRun(journal, ports_.files); !written) {
        // Nothing was moved, so the folder is not needed; if it is not empty it stays.
        (void)ports_.files.removeEmptyDirectory(layout.root);
        return tl::unexpected(written.error());
    }

    std::set<Path> earlierRests;
    for (const auto& entry : journal.planned)
        earlierRests.merge(restsBeside(entry, ports_.files));
    RemovalReport report{.apps = apps,
                         .mode = mode,
                         .quarantineRoot = layout.root,
                         .manifestURL = layout.root / manifestFileName,
                         .operations = plan,
                         .results = refused};
    StepCounter steps(control);
    steps.expect(permitted.size());
    for (const bool requiresRoot : {false, true}) {
        auto& runner = requiresRoot ? ports_.privilegedRunner : ports_.userRunner;
        auto results = runStepwise(runner, operationsOfLevel(permitted, requiresRoot), steps);
        std::move(results.begin(), results.end(), std::back_inserter(report.results));
    }

    steps.finish();
    report.irreversible = irreversibleKinds(report, emptyResets);
    report.manifestFailure = conclude(journal, earlierRests, report);
    const auto succeeded = std::count_if(report.results.begin(), report.results.end(),
                                         [](const OperationResult& result) { return result.succeeded; });
    ports_.log.info("Removed {}/{} traces", succeeded, plan.size());
    return report;
}

RemovalPhases RemovalExecutor::phases(const std::vector<RemovalOperation>& plan) const {
    const auto permitted = judged(plan).first;
    std::vector<std::string> kinds;
    kinds.reserve(permitted.size());
    for (const bool requiresRoot : {false, true}) {
        const bool isBatch = (requiresRoot ? ports_.privilegedRunner : ports_.userRunner).asksPerRun();
        for (const auto& each : operationsOfLevel(permitted, requiresRoot))
            kinds.emplace_back(isBatch ? administratorStep : kindName(each.kind));
    }
    return RemovalPhases(std::move(kinds));
}

/// Why the run's journal stays instead of a manifest; recovery examines it again.
std::optional<Message> RemovalExecutor::conclude(const RemovalJournal& journal,
                                                 const std::set<Path>& earlierRests,
                                                 RemovalReport& report) const {
    const auto& root = journal.quarantineRoot;
    for (const auto& entry : unfinishedMoves(journal.planned, earlierRests, ports_.files)) {
        ports_.log.error("The journal stays in {}, a move was left unfinished: {}", root.string(),
                         entry.source);
        report.unsettled.push_back(entry.source);
    }
    if (!report.unsettled.empty()) return Message{"failure.moveUnfinished"};

    const ObservedResults observed(report.operations, ports_.files);
    const auto done = observed.of(report.results);
    // The folder was moved or deleted; if moved, the journal in it tells its contents. Writing a manifest
    // would only create a second folder of that name.
    const bool isFolderGone = isMissing(ports_.files, root / journalFileName);
    observed.failWhatVanished(report.results, {isFolderGone ? quarantineGoneKey : "failure.notInQuarantine"});
    if (isFolderGone) {
        ports_.log.error("The quarantine folder {} went away during the run, and its journal with it",
                         root.string());
        return Message{"failure.quarantineGone %@", {root.string()}};
    }
    if (std::ranges::any_of(report.results,
                            [&](const auto& each) { return observed.mayStillHappen(each); })) {
        ports_.log.error("The journal stays in {}, the administrator's commands may still run",
                         root.string());
        return Message{"failure.mayStillRun"};
    }
    const auto written = finishRun({.createdAt = journal.createdAt,
                                    .quarantineRoot = root,
                                    .apps = journal.apps,
                                    .entries = manifestEntries(report.operations, done),
                                    .irreversible = report.irreversible},
                                   ports_.files);
    if (written) return std::nullopt;
    ports_.log.error("Could not write manifest {}: {}", report.manifestURL.string(),
                     failureKey(written.error().fault));
    return Message{std::string(failureKey(written.error().fault))};
}

} // namespace tidwen
