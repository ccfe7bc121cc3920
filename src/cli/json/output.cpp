#include "cli/json/output.h"

#include "base/json.h"
#include "base/timestamp.h"
#include "cli/json/records.h"

namespace tidwen::json {

namespace {

constexpr auto toValue = [](const auto& record) { return value(record); };

Value object(const AppRecord& app) {
    return {{"name", app.name}, {"bundleID", app.bundleID}};
}

Value object(const BundleCoverage& owners) {
    return {{"unreadable", array(owners.unreadable, toValue)},
            {"uncounted", array(owners.uncounted, toValue)},
            {"damaged", array(owners.damaged, toValue)},
            {"absent", array(owners.absent, toValue)}};
}

Value object(const ScanResult& result) {
    Value fields{{"target", value(result.target)},
                 {"traces", array(result.traces, toValue)},
                 {"unreadableLocations", array(result.unreadableLocations, toValue)},
                 {"skippedNames", array(result.skippedNames, toValue)},
                 {"leftOut", result.leftOut},
                 {"unknownOwners", object(result.owners)},
                 {"isProtected", result.isProtected},
                 {"nameMatchingDisabled", result.nameMatchingDisabled},
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
                              {"tccSurvivors", array(app.tccSurvivors, toValue)},
                              {"unreadable", array(app.unreadable, [](auto scope) { return name(scope); })}};
             })}};
}

/// As the file in the quarantine folder has it.
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

std::string document(const std::vector<InstalledApp>& apps) {
    return writeJson(array(apps, toValue));
}

std::string document(const std::vector<ScanResult>& results) {
    return writeJson(array(results, [](const ScanResult& result) { return object(result); }));
}

std::string document(const std::vector<RemovalOperation>& plan) {
    return writeJson(array(plan, toValue));
}

std::string document(const RemovalReport& report, const Texts& texts) {
    Value result{
        {"apps", array(report.apps, [](const AppRecord& app) { return object(app); })},
        {"mode", std::string(name(report.mode))},
        {"operations", array(report.operations, toValue)},
        {"results", array(report.results, [&](const OperationResult& r) { return object(r, texts); })}};
    if (!report.quarantineRoot.isRoot()) {
        result["quarantineRoot"] = report.quarantineRoot.string();
        result["manifestURL"] = report.manifestURL.string();
    }
    if (report.verification) result["verification"] = object(*report.verification);
    put(result, "reclaimedBytes", report.reclaimedBytes);
    const auto& unseen = report.unseen;
    if (!unseen.unreadableLocations.empty())
        result["unreadableLocations"] = array(unseen.unreadableLocations, toValue);
    if (unseen.leftOut > 0) result["leftOut"] = unseen.leftOut;
    if (!unseen.knowsAllOwners()) result["unknownOwners"] = object(unseen.owners);
    Value left = Value::array();
    for (const auto& each : report.left)
        for (const auto& trace : each.traces)
            left.push_back(value(trace));
    if (!left.empty()) result["leftInPlace"] = std::move(left);
    if (!report.emptiedFolders.empty()) result["emptiedFolders"] = array(report.emptiedFolders, toValue);
    if (!report.deadLinks.empty()) result["deadLinks"] = array(report.deadLinks, toValue);
    if (!report.unsettled.empty()) result["unsettled"] = report.unsettled;
    if (!report.skippedNames.empty()) result["skippedNames"] = array(report.skippedNames, toValue);
    if (report.manifestFailure) result["manifestFailure"] = texts.text(*report.manifestFailure);
    return writeJson(result);
}

std::string document(const std::vector<RemovalHistoryEntry>& entries,
                     const std::vector<UnfinishedRun>& unfinished, const Texts& texts) {
    Value runs = array(entries, [](const RemovalHistoryEntry& entry) {
        Value result{{"root", entry.root.string()},
                     {"status", entry.manifest.recoveredAt ? "recovered" : "finished"},
                     {"manifest", object(entry.manifest)},
                     {"pendingMoves", entry.pendingMoves},
                     {"totalMoves", entry.totalMoves},
                     {"missingMoves", entry.missingMoves}};
        put(result, "sizeBytes", entry.sizeBytes);
        return result;
    });
    for (const auto& run : unfinished) {
        Value result{{"root", run.root.string()},
                     {"status", std::string(name(run.problem))},
                     {"advice", texts.text(run.advice())},
                     {"unsettled", run.unsettled}};
        if (run.known) result["known"] = object(*run.known);
        runs.push_back(std::move(result));
    }
    return writeJson(runs);
}

std::string document(const UndoReport& report) {
    return writeJson({{"restoredCount", report.restoredCount},
                      {"totalCount", report.totalCount},
                      {"failures", report.failures},
                      {"relaunchedJobs", report.relaunchedJobs},
                      {"alreadyBack", report.alreadyBack},
                      {"renamed", array(report.renamed, toValue)}});
}

std::string document(const std::vector<Manifest>& manifests) {
    return writeJson(array(manifests, [](const Manifest& manifest) { return object(manifest); }));
}

} // namespace tidwen::json
