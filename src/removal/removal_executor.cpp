#include "removal/removal_executor.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace tidwen {

namespace {

std::vector<RemovalOperation> operationsOfLevel(const std::vector<RemovalOperation>& plan,
                                                bool requiresRoot) {
    std::vector<RemovalOperation> level;
    std::copy_if(plan.begin(), plan.end(), std::back_inserter(level),
                 [&](const RemovalOperation& each) { return each.requiresRoot == requiresRoot; });
    return level;
}

/// The results as the manifest takes them. A batch that dies or overruns its time reports failure for moves
/// that it did make, and an item that lies in quarantine must be in the manifest to come back.
std::vector<OperationResult> asObserved(std::vector<OperationResult> results,
                                        const std::vector<RemovalOperation>& plan, const FileSystem& files) {
    std::unordered_map<int, const operation::Move*> moves;
    for (const auto& each : plan)
        if (const auto* move = std::get_if<operation::Move>(&each.kind)) moves.emplace(each.id, move);
    for (auto& result : results) {
        const auto move = result.succeeded ? moves.end() : moves.find(result.operationID);
        if (move == moves.end()) continue;
        result.succeeded = files.exists(move->second->destination) && !files.exists(move->second->source);
    }
    return results;
}

/// A move between disks that could neither be completed nor taken back left its item under a hidden name.
/// Only the journal knows it: recovery brings it to one of its two places.
bool leavesAnItemAside(const std::vector<RemovalOperation>& plan, const FileSystem& files) {
    return std::any_of(plan.begin(), plan.end(), [&](const RemovalOperation& each) {
        const auto* move = std::get_if<operation::Move>(&each.kind);
        return move && !files.exists(move->source) && !files.exists(move->destination)
               && files.isSetAside(move->source);
    });
}

} // namespace

FileResult<RemovalReport> RemovalExecutor::execute(const std::vector<RemovalOperation>& plan,
                                                   const QuarantineLayout& layout,
                                                   const std::vector<AppRecord>& apps, RemovalMode mode,
                                                   Timestamp date) {
    const RemovalJournal journal{
        .createdAt = date, .quarantineRoot = layout.root, .apps = apps, .planned = manifestEntries(plan)};
    const Path journalFile = layout.root / journalFileName;
    if (const auto written = writeJournal(journal, journalFile, ports_.files); !written) {
        // Nothing was moved, so nothing needs the folder; with something in it, it stays.
        (void)ports_.files.removeEmptyDirectory(layout.root);
        return tl::unexpected(written.error());
    }

    RemovalReport report{.apps = apps,
                         .mode = mode,
                         .quarantineRoot = layout.root,
                         .manifestURL = layout.root / manifestFileName,
                         .operations = plan};
    for (const bool requiresRoot : {false, true}) {
        const auto operations = operationsOfLevel(plan, requiresRoot);
        if (operations.empty()) continue; // an empty batch would still ask for a password
        auto results = (requiresRoot ? ports_.privilegedRunner : ports_.userRunner).run(operations);
        std::move(results.begin(), results.end(), std::back_inserter(report.results));
    }

    const Manifest manifest{.createdAt = date,
                            .quarantineRoot = layout.root,
                            .apps = apps,
                            .entries = manifestEntries(plan, asObserved(report.results, plan, ports_.files))};
    if (leavesAnItemAside(plan, ports_.files)) {
        ports_.log.error("A move was left unfinished, the journal stays: {}", journalFile.string());
        report.manifestFailure = Message{"failure.moveUnfinished"};
    } else if (const auto written = writeManifest(manifest, report.manifestURL, ports_.files); !written) {
        ports_.log.error("Could not write manifest {}: {}", report.manifestURL.string(),
                         failureKey(written.error().fault));
        report.manifestFailure = Message{std::string(failureKey(written.error().fault))};
    } else {
        // A journal beside a manifest is not read again, so a failure here costs nothing.
        (void)ports_.files.removeFile(journalFile);
    }

    const auto succeeded = std::count_if(report.results.begin(), report.results.end(),
                                         [](const OperationResult& result) { return result.succeeded; });
    ports_.log.info("Removed {}/{} traces", succeeded, plan.size());
    return report;
}

} // namespace tidwen
