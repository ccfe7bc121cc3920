#include "cli/commands/terminal_history.h"

#include "base/message.h"
#include "base/path.h"
#include "cli/console.h"
#include "cli/end_signals.h"
#include "cli/labels.h"
#include "program/mac.h"
#include "program/session.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
#include "quarantine/unfinished_run.h"

#include <functional>

namespace tidwen {

TerminalHistory::TerminalHistory(const CommandContext& context, Mac& mac)
    : context_(context),
      files_(mac.system.files),
      undo_(undoPorts(mac), mac.system.user),
      purge_(mac.system.files, mac.system.user, mac.administrator, mac.system.log, mac.trashForRoot),
      model_({mac.system.files, undo_, purge_, mac.system.defaults, mac.system.texts, main_, background_},
             mac.system.user) {}

const std::vector<RemovalHistoryEntry>& TerminalHistory::load(Sizes sizes) {
    bool isDone = false;
    model_.load(sizes, [&] { isDone = true; });
    main_.runUntil([&] { return isDone; });
    return model_.entries.get();
}

template<class Result>
tl::expected<Result, Message>
TerminalHistory::await(const std::string& work,
                       const std::function<void(HistoryModel::Answer<Result>)>& start) {
    context_.console.progress(work);
    const auto steps = model_.progress.observe([&](const auto& step) {
        if (step)
            context_.console.progress(
                labels::progress(work, *step, context_.texts, context_.console.progressColumns()));
    });
    std::optional<tl::expected<Result, HistoryModel::Refusal>> answer;
    {
        const EndSignals signals(main_, [&] {
            if (answer) return; // already complete
            context_.console.error(context_.text("cli.stopping"));
            model_.stop();
        });
        start([&](const auto& result) {
            answer = result;
            background_.close();
        });
        main_.runUntil([&] { return answer.has_value(); });
    }
    main_.drain(); // handles a signal received at the end
    context_.console.endProgress();
    return answer->map_error([](const HistoryModel::Refusal& refusal) {
        return refusal.reason.value_or(Message{"failure.adminCancelled"});
    });
}

tl::expected<Manifest, Message> TerminalHistory::record(const Path& root) const {
    if (auto manifest = readManifest(root, files_)) return std::move(*manifest);
    const auto run = readUnfinishedRun(root, files_);
    if (!run) return tl::unexpected(Message{"history.run.unknown %@", {root.lastComponent()}});
    if (!run->known) return tl::unexpected(run->whyNoUndo());
    return *run->known;
}

tl::expected<UndoReport, Message> TerminalHistory::undo(const Path& root, const ItemChoice& items) {
    return await<UndoReport>(context_.text("home.recovery.restoring"),
                             [&](auto answer) { model_.undo(root, items, std::move(answer)); });
}

tl::expected<QuarantinePurge::Outcome, Message>
TerminalHistory::remove(const std::vector<RemovalHistoryEntry>& chosen,
                        QuarantinePurge::CutOffUndo cutOffUndo) {
    return await<QuarantinePurge::Outcome>(context_.text("cli.progress.deleting"), [&](auto answer) {
        model_.remove(chosen, std::move(answer), cutOffUndo);
    });
}

} // namespace tidwen
