#include "removal/removal_texts.h"

#include "base/byte_sum.h"
#include "base/message.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "operations/stepwise_run.h"
#include "removal/failure_help.h"
#include "scan/permissions/permission_audit.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

std::string number(std::size_t count) {
    return std::to_string(count);
}

/// Items moved and items to be moved, the same count as in the history and an undo. For a run without moves,
/// its steps.
std::pair<std::size_t, std::size_t> doneAndAll(const RemovalReport& report,
                                               const std::vector<RemovalReport::Failure>& failures) {
    const auto isMove = [](const RemovalOperation& step) {
        return std::holds_alternative<operation::Move>(step.kind);
    };
    const auto moves = static_cast<std::size_t>(std::ranges::count_if(report.operations, isMove));
    if (moves == 0) return {report.operations.size() - failures.size(), report.operations.size()};
    const auto failed = std::ranges::count_if(failures, isMove, &RemovalReport::Failure::operation);
    return {moves - static_cast<std::size_t>(failed), moves};
}

/// Beside moving items: a review counts it, and the history does not.
bool resetPermissions(const RemovalReport& report) {
    const auto isMove = [](const RemovalOperation& step) {
        return std::holds_alternative<operation::Move>(step.kind);
    };
    const std::string reset(kindName(operation::ResetPermissions()));
    return std::ranges::any_of(report.operations, isMove)
           && std::ranges::find(report.irreversible, reset) != report.irreversible.end();
}

/// An identifier alone does not show that the step concerned permissions.
std::string subjectOf(const RemovalOperation& step, const Texts& texts) {
    return std::holds_alternative<operation::ResetPermissions>(step.kind)
               ? texts.text("report.failures.permissions %@", {step.displayName})
               : displayName(step, texts);
}

std::string reasonWithHelp(const Message& reason, const Texts& texts) {
    const auto help = helpFor(reason);
    return help ? texts.text(reason) + " " + texts.text(*help) : texts.text(reason);
}

std::vector<std::string> remarksOf(const RemovalReport& report, const Texts& texts) {
    std::vector<std::string> lines;
    const auto add = [&](const char* key, const std::vector<Path>& paths) {
        for (const auto& path : paths)
            lines.push_back(texts.text(key, {path.string()}));
    };
    add("cli.report.emptied %@", report.emptiedFolders);
    add("cli.report.deadLink %@", report.deadLinks);
    add("cli.skippedName %@", report.skippedNames);
    return lines;
}

/// macOS also records what was denied or never decided.
bool isGiven(const PermissionGrant& grant) {
    using enum PermissionGrant::State::Kind;
    return grant.state.kind == granted || grant.state.kind == limited;
}

} // namespace

ConfirmationTexts confirmationTexts(const RemovalSummary& summary, const std::string& subject,
                                    RemovalMode mode, MoveRights rights, const Texts& texts) {
    ConfirmationTexts words;
    words.title = texts.text(
        mode == RemovalMode::reset ? "confirm.reset.title %@" : "confirm.uninstall.title %@", {subject});
    words.summary = texts.text("confirm.summary %lld %@",
                               {std::to_string(summary.totalCount), summary.totalSizeText(texts)});
    for (const auto& tier : summary.tiers) {
        auto line =
            texts.text("risk." + std::string(name(tier.risk)) + ".count %lld", {std::to_string(tier.count)});
        const auto size = tier.sizeText(texts);
        words.breakdown.push_back(size ? line + ", " + *size : line);
    }
    if (summary.movedCount > 0)
        words.reversible = texts.text("confirm.reversible %lld", {std::to_string(summary.movedCount)});
    if (summary.unloadedCount > 0)
        words.unloaded = texts.text("confirm.unloaded %lld", {std::to_string(summary.unloadedCount)});
    if (!summary.permanent.empty())
        words.permanentHeading =
            texts.text("confirm.permanent.heading %lld", {number(summary.permanent.size())});
    for (const auto& trace : summary.permanent)
        words.permanent.push_back(displayName(trace, texts));
    if (summary.requiresPassword && rights == MoveRights::administrator)
        words.password = texts.text("confirm.password");
    if (summary.resetsPermissions) words.permissionsReset = texts.text("confirm.permissionsReset");
    if (words.permissionsReset && summary.keepsPathPermissions)
        *words.permissionsReset += " " + texts.text("report.verify.pathGrant");
    return words;
}

ReportTexts reportTexts(const RemovalReport& report, const std::string& subject, const Texts& texts) {
    const bool isReset = report.mode == RemovalMode::reset;
    const auto failures = report.failures();
    ReportTexts words;
    words.summary =
        texts.text(isReset ? "report.summary.reset %@" : "report.summary.uninstall %@", {subject});
    const auto [done, all] = doneAndAll(report, failures);
    words.isWhole = done == all;
    words.counts = texts.text(isReset ? "report.summary.clearedCount %lld %lld"
                                      : "report.summary.removedCount %lld %lld",
                              {number(done), number(all)});
    if (resetPermissions(report)) words.counts = texts.text("report.summary.permissions %@", {words.counts});
    if (report.reclaimedBytes)
        words.reclaimed = texts.text("report.summary.reclaimed %@",
                                     {sizeText(*report.reclaimedBytes, report.isReclaimedPartial, texts)});
    std::size_t notBegun = 0;
    for (const auto& failure : failures)
        if (failure.reason.key == stoppedKey)
            ++notBegun;
        else
            words.failures.push_back(
                {subjectOf(failure.operation, texts), reasonWithHelp(failure.reason, texts)});
    for (const auto& item : report.unsettled)
        words.unsettled.push_back({item, texts.text("failure.moveUnfinished")});
    words.remarks = remarksOf(report, texts);
    if (notBegun > 0) words.stopped = texts.text("report.stopped %lld", {number(notBegun)});
    if (!report.verification) return words;
    std::vector<VerificationReport::AppVerification> checked; // installer files have no permissions
    std::ranges::copy_if(report.verification->apps, std::back_inserter(checked), [&](const auto& app) {
        return !app.bundleID.empty() && !report.keepsItsPermissions(app.bundleID);
    });
    if (checked.empty()) return words;
    for (const auto& app : checked)
        for (const auto& grant : app.tccSurvivors)
            words.verification.push_back(texts.text(isGiven(grant) ? "report.verify.tccSurvivor %@ %@"
                                                                   : "report.verify.tccRecord %@ %@",
                                                    {app.name, permissionTitle(grant.service, texts)}));
    if (std::ranges::any_of(checked, [](const auto& app) {
            return std::ranges::any_of(app.tccSurvivors, &PermissionGrant::isPathClient);
        }))
        words.verification.push_back(texts.text("report.verify.pathGrant"));
    const bool isComplete =
        std::ranges::all_of(checked, [](const auto& app) { return app.unreadable.empty(); });
    if (!isComplete) words.verification.push_back(texts.text("report.verify.unreadable"));
    words.isClean = words.verification.empty();
    if (words.isClean) words.verification.push_back(texts.text("report.verify.clean"));
    return words;
}

} // namespace tidwen
