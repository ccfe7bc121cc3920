#include "base/executor.h"
#include "base/followed_work.h"
#include "base/path.h"
#include "base/timestamp.h"
#include "cli/command.h"
#include "cli/commands/lock_refusal.h"
#include "cli/commands/numbered_history.h"
#include "cli/console.h"
#include "cli/end_signals.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "platform/file_system.h"
#include "platform/system.h"
#include "program/mac.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/recovery.h"
#include "quarantine/trash_lock.h"
#include "quarantine/unfinished_run.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tidwen {

namespace {

void print(const Manifest& manifest, const CommandContext& context, const Mac& mac) {
    // An unloaded job is a step of the run, but not an item.
    const auto entry = readHistoryEntry(manifest.quarantineRoot, mac.system.files);
    context.console.line(context.text(
        "cli.recover.one %@ %@ %@",
        {labels::names(manifest.apps), displayDate(manifest.createdAt),
         context.text("history.row.items %lld", {std::to_string(entry ? entry->pendingMoves : 0)})}));
    if (const auto undo = undoCommandLine(manifest.quarantineRoot, context, mac))
        context.console.verbatim(
            context.text(missesItems(manifest) ? "cli.undo.hintRest %@" : "cli.undo.hint %@", {*undo}));
}

void error(const UnfinishedRun& run, const CommandContext& context, const Mac& mac) {
    context.error({"cli.history.unfinished %@ %@", {run.root.string(), context.texts.text(run.advice())}});
    for (const auto& item : run.unsettled)
        context.console.error("  " + item);
    if (const auto undo = undoCommandLine(run.root, context, mac))
        context.error({"cli.undo.hint %@", {*undo}});
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

/// The first Ctrl-C stops it after the current quarantine folder.
RecoveryOutcome recover(const CommandContext& context, const System& system) {
    MainQueue main;
    FollowedWork::Progress progress;
    FollowedWork work(main, progress);
    const auto steps = progress.observe([&](const auto& step) {
        if (step)
            context.console.progress(
                labels::progress(context.text("cli.progress.recovering"), *step, context.texts));
    });
    std::optional<RecoveryOutcome> outcome;
    const EndSignals signals(main, [&] {
        if (outcome) return; // already complete
        context.console.error(context.text("cli.stopping"));
        work.stop();
    });
    WorkQueue background;
    background.post([&, control = work.begin()] {
        auto found = recoverInterruptedRemovals(system.user, system.files, system.clock, system.log, control);
        main.post([&, found = std::move(found)] { outcome = found; });
    });
    main.runUntil([&] { return outcome.has_value(); });
    work.end();
    context.console.endProgress();
    return std::move(*outcome);
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    auto& system = mac.system;
    FileResult<std::unique_ptr<FolderLock>> lock;
    // While another process holds the lock, its removal is not interrupted. Without a Trash there is nothing
    // to lock.
    if (system.files.exists(system.user.trash())) lock = lockTrash(system.user, system.files);
    if (!lock) return refuseWithoutLock(context, lock.error());
    const auto [recovered, unfinished, missing, notBegun, settled, strays, unlisted] =
        recover(context, system);
    if (context.arguments.json) {
        context.console.document(json::document(recovered));
    } else {
        if (recovered.empty() && unfinished.empty() && settled.empty() && strays.empty() && notBegun.empty()
            && unlisted.empty())
            context.console.line(context.text("cli.recover.none"));
        for (const auto& place : settled)
            context.console.line(context.text("cli.recover.settled %@", {place.string()}));
        for (const auto& manifest : recovered)
            print(manifest, context, mac);
    }
    for (const auto& run : unfinished)
        error(run, context, mac);
    list("cli.recover.missing", missing, context);
    list("cli.recover.strayCopies", strays, context);
    list("cli.recover.unlisted", unlisted, context);
    if (!notBegun.empty()) context.error({"cli.recover.stopped %lld", {std::to_string(notBegun.size())}});
    return unfinished.empty() && missing.empty() && strays.empty() && unlisted.empty() && notBegun.empty()
               ? ExitStatus::done
               : ExitStatus::someFailed;
}

} // namespace

Command recoverCommand() {
    return {.syntax = {.name = "recover", .summary = "cli.help.recover"},
            .run = run,
            .movesItems = movesUnlessDryRun};
}

} // namespace tidwen
