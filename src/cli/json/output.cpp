#include "cli/json/output.h"

#include "base/json.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/timestamp.h"
#include "cli/json/records.h"
#include "operations/privileged_runner.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"

#include <optional>

namespace tidwen::json {

namespace {

Value object(const AppRecord& app) {
    return {{"name", app.name}, {"bundleID", app.bundleID}};
}

Value object(const BundleCoverage& owners) {
    return {{"unreadable", array(owners.unreadable)},
            {"uncounted", array(owners.uncounted)},
            {"damaged", array(owners.damaged)},
            {"absent", array(owners.absent)}};
}

Value object(const ScanResult& result, const Texts& texts) {
    Value traces = array(result.traces, [&](const Trace& trace) {
        Value fields = value(trace, texts);
        fields["isSelectedByDefault"] = takenByDefault(trace, result);
        return fields;
    });
    Value fields{{"target", value(result.target)},
                 {"traces", std::move(traces)},
                 {"unreadableLocations", array(result.unreadableLocations)},
                 {"skippedNames", array(result.skippedNames)},
                 {"leftOut", result.leftOut},
                 {"unknownOwners", object(result.owners)},
                 {"isProtected", result.isProtected},
                 {"nameMatchingDisabled", result.nameMatchingDisabled},
                 {"identifierMatchingDisabled", result.identifierMatchingDisabled},
                 {"unusableHelpers", result.unusableHelpers},
                 {"permissions", value(result.permissions)}};
    if (result.immovable)
        fields["immovable"] = {{"reason", std::string(name(result.immovable->reason))},
                               {"place", result.immovable->place.string()}};
    return fields;
}

Value object(const OperationResult& result, const Texts& texts) {
    Value fields{{"operationID", result.operationID}, {"succeeded", result.succeeded}};
    if (result.failureReason) {
        fields["failureReason"] = texts.text(*result.failureReason);
        fields["failureKey"] = result.failureReason->key;
    }
    return fields;
}

Value object(const VerificationReport& verification) {
    return {{"apps", array(verification.apps, [](const VerificationReport::AppVerification& app) {
                 return Value{{"bundleID", app.bundleID},
                              {"name", app.name},
                              {"tccSurvivors", array(app.tccSurvivors)},
                              {"unreadable", array(app.unreadable, [](auto scope) { return name(scope); })}};
             })}};
}

/// The same as in the file in the quarantine folder.
Value object(const Manifest& manifest) {
    return parseJson(encode(manifest)).value_or(Value::object());
}

} // namespace

std::string document(const Sample& sample) {
    return writeJson({{"root", sample.root.string()},
                      {"home", sample.home.string()},
                      {"applications", sample.applications},
                      {"bytes", sample.bytes}});
}

std::string document(const std::vector<const InstalledApp*>& apps, const AppTags& tags,
                     const ProtectedApps& protectedApps) {
    return writeJson(array(apps, [&](const InstalledApp* app) {
        Value fields = value(*app);
        // Omitted while the settings are unreadable.
        if (!protectedApps.problem()) {
            fields["tags"] = tags.tags(app->bundleID);
            fields["isProtected"] = protectedApps.contains(app->bundleID);
        }
        return fields;
    }));
}

std::string document(const std::vector<ScanResult>& results, const Texts& texts) {
    return writeJson(array(results, [&](const ScanResult& result) { return object(result, texts); }));
}

std::string document(const std::vector<RemovalOperation>& plan, const Texts& texts) {
    return writeJson(array(plan, [&](const RemovalOperation& step) { return value(step, texts); }));
}

std::string document(const RemovalReport& report, const RemovalSubject& subject, const Texts& texts) {
    Value result{
        {"apps", array(report.apps, [](const AppRecord& app) { return object(app); })},
        {"mode", subject.kindName()},
        {"operations",
         array(report.operations, [&](const RemovalOperation& step) { return value(step, texts); })},
        {"results", array(report.results, [&](const OperationResult& r) { return object(r, texts); })}};
    if (!report.quarantineRoot.isRoot()) {
        result["quarantineRoot"] = report.quarantineRoot.string();
        result["manifestURL"] = report.manifestURL.string();
    }
    if (report.verification) result["verification"] = object(*report.verification);
    put(result, "reclaimedBytes", report.reclaimedBytes);
    if (report.isReclaimedPartial) result["isReclaimedPartial"] = true;
    const auto& unseen = report.unseen;
    if (!unseen.unreadableLocations.empty())
        result["unreadableLocations"] = array(unseen.unreadableLocations);
    if (unseen.leftOut > 0) result["leftOut"] = unseen.leftOut;
    if (!unseen.knowsAllOwners()) result["unknownOwners"] = object(unseen.owners);
    Value left = Value::array();
    for (const auto& each : report.left)
        for (const auto& item : each.traces) {
            left.push_back(value(item.trace, texts));
            const auto why = item.describe();
            left.back()["leftReason"] = texts.text(why);
            left.back()["leftKey"] = why.key;
        }
    if (!left.empty()) result["leftInPlace"] = std::move(left);
    if (!report.emptiedFolders.empty()) result["emptiedFolders"] = array(report.emptiedFolders);
    if (!report.deadLinks.empty()) result["deadLinks"] = array(report.deadLinks);
    if (!report.unsettled.empty()) result["unsettled"] = report.unsettled;
    if (!report.skippedNames.empty()) result["skippedNames"] = array(report.skippedNames);
    if (report.manifestFailure) result["manifestFailure"] = texts.text(*report.manifestFailure);
    return writeJson(result);
}

namespace {

Value object(const RemovalHistoryEntry& entry, std::optional<std::size_t> number) {
    Value result{{"root", entry.root.string()},
                 {"status", entry.manifest.recoveredAt ? "recovered" : "finished"},
                 {"manifest", object(entry.manifest)},
                 {"pendingMoves", entry.pendingMoves},
                 {"totalMoves", entry.totalMoves},
                 {"missingMoves", entry.missingMoves}};
    put(result, "number", number);
    put(result, "sizeBytes", entry.sizeBytes);
    if (entry.isSizePartial) result["isSizePartial"] = true;
    if (entry.isPartlyPurged) result["isPartlyPurged"] = true;
    return result;
}

Value object(const UnfinishedRun& run, const Texts& texts) {
    Value result{{"root", run.root.string()},
                 {"status", std::string(name(run.problem))},
                 {"advice", texts.text(run.advice())},
                 {"unsettled", run.unsettled}};
    if (run.known) result["known"] = object(*run.known);
    return result;
}

Value object(const RunItem& item) {
    Value fields{{"source", item.entry.source},
                 {"place", name(item.place)},
                 {"requiresRoot", item.entry.requiresRoot},
                 {"bundleID", item.entry.bundleID}};
    put(fields, "destination", item.entry.destination);
    return fields;
}

std::string withItems(Value run, const std::vector<RunItem>& items) {
    run["items"] = array(items, [](const RunItem& item) { return object(item); });
    return writeJson(run);
}

Value object(const PlannedReturn& item, const Texts& texts) {
    Value fields{{"source", value(item.oldPlace)},
                 {"quarantined", value(item.quarantined)},
                 {"requiresRoot", item.requiresRoot}};
    if (item.destination) fields["destination"] = value(*item.destination);
    if (item.problem) {
        fields["failureReason"] = texts.text(*item.problem);
        fields["failureKey"] = item.problem->key;
    }
    return fields;
}

} // namespace

std::string document(const std::vector<RemovalHistoryEntry>& entries, bool areNumbered,
                     const std::vector<UnfinishedRun>& unfinished, const Texts& texts) {
    Value runs = Value::array();
    for (const auto& entry : entries)
        runs.push_back(object(entry, areNumbered ? std::optional(runs.size() + 1) : std::nullopt));
    for (const auto& run : unfinished)
        runs.push_back(object(run, texts));
    return writeJson(runs);
}

std::string document(const RemovalHistoryEntry& entry, std::optional<std::size_t> number,
                     const std::vector<RunItem>& items) {
    return withItems(object(entry, number), items);
}

std::string document(const UnfinishedRun& run, const std::vector<RunItem>& items, const Texts& texts) {
    return withItems(object(run, texts), items);
}

std::string document(const Path& root, const UndoPlan& plan, const Texts& texts) {
    return writeJson(
        {{"root", value(root)},
         {"items", array(plan.items, [&](const PlannedReturn& item) { return object(item, texts); })},
         {"jobs", plan.jobs},
         {"alreadyBack", plan.alreadyBack}});
}

std::string document(const UndoReport& report, const Texts& texts) {
    const auto failed = [&](const Problem& failure) {
        return Value{{"item", failure.item},
                     {"failureReason", texts.text(failure.reason)},
                     {"failureKey", failure.reason.key}};
    };
    return writeJson({{"restoredCount", report.restoredCount},
                      {"totalCount", report.totalCount},
                      {"failures", array(report.failures, failed)},
                      {"relaunchedJobs", report.relaunchedJobs},
                      {"alreadyBack", report.alreadyBack},
                      {"renamed", array(report.renamed)}});
}

std::string document(const RecoveryOutcome& outcome, const Texts& texts) {
    return writeJson(
        {{"recovered", array(outcome.recovered, [](const Manifest& manifest) { return object(manifest); })},
         {"unfinished",
          array(outcome.unfinished, [&](const UnfinishedRun& run) { return object(run, texts); })},
         {"missing", outcome.missing},
         {"settled", array(outcome.settledReturns)},
         {"strays", array(outcome.strayCopies)},
         {"unlisted", array(outcome.unlisted)},
         {"notBegun", array(outcome.notBegun)}});
}

} // namespace tidwen::json
