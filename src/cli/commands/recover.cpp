#include "base/path.h"
#include "base/timestamp.h"
#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/console.h"
#include "cli/flow_session.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "program/mac.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/manifest_subject.h"
#include "quarantine/recovery.h"
#include "quarantine/unfinished_run.h"

#include <string>

namespace tidwen {

namespace {

/// Nothing waits for another recovery or for the user.
bool isWhole(const RecoveryOutcome& outcome) {
    return outcome.unfinished.empty() && outcome.strayCopies.empty() && outcome.unlisted.empty()
           && outcome.notBegun.empty();
}

void print(const Manifest& manifest, const CommandContext& context, const Mac& mac) {
    // An unloaded job is a step of the run, but not an item.
    const auto entry = readHistoryEntry(manifest.quarantineRoot, mac.system.files);
    context.console.line(context.text(
        "cli.recover.one %@ %@ %@",
        {subjectText(manifest, context.texts), displayDate(manifest.createdAt),
         context.text("history.row.items %lld", {std::to_string(entry ? entry->pendingMoves : 0)})}));
    if (const auto undo = undoCommandLine(manifest.quarantineRoot, context, mac))
        context.offer(missesItems(manifest) ? "cli.undo.hintRest %@" : "cli.undo.hint %@", *undo);
}

void error(const UnfinishedRun& run, const CommandContext& context, const Mac& mac) {
    context.error({"cli.history.unfinished %@ %@", {run.root.string(), context.texts.text(run.advice())}});
    for (const auto& item : run.unsettled)
        context.console.error("  " + item);
    if (const auto undo = undoCommandLine(run.root, context, mac))
        context.advise({"cli.undo.hint %@"}, *undo);
}

const std::string& line(const Path& place) {
    return place.string();
}
const std::string& line(const std::string& place) {
    return place;
}

template<class Places>
void list(const char* heading, const Places& places, const CommandContext& context) {
    if (!places.empty()) context.error({heading});
    for (const auto& place : places)
        context.console.error("  " + line(place));
}

void print(const RecoveryOutcome& outcome, const CommandContext& context, const Mac& mac) {
    if (outcome.recovered.empty() && outcome.settledReturns.empty() && isWhole(outcome))
        context.console.line(context.text("cli.recover.none"));
    for (const auto& place : outcome.settledReturns)
        context.console.line(context.text("cli.recover.settled %@", {place.string()}));
    for (const auto& manifest : outcome.recovered)
        print(manifest, context, mac);
}

ExitStatus runRecover(const CommandContext& context, Mac& mac) {
    FlowSession session(context, mac);
    const auto& recovery = session.recover();
    if (!recovery) return context.refuse(recovery.error());
    const auto& outcome = *recovery;
    if (context.arguments.json)
        context.console.document(json::document(outcome, context.texts));
    else
        print(outcome, context, mac);
    for (const auto& run : outcome.unfinished)
        error(run, context, mac);
    list("cli.recover.missing", outcome.missing, context);
    list("cli.recover.strayCopies", outcome.strayCopies, context);
    list("cli.recover.unlisted", outcome.unlisted, context);
    if (!outcome.notBegun.empty())
        context.error({"cli.recover.stopped %lld", {std::to_string(outcome.notBegun.size())}});
    return isWhole(outcome) && outcome.missing.empty() ? ExitStatus::done : ExitStatus::someFailed;
}

} // namespace

Command recoverCommand() {
    return {.syntax = {.name = "recover", .summary = "cli.help.recover"}, .run = runRecover};
}

} // namespace tidwen
