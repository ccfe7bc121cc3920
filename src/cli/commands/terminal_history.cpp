#include "cli/commands/terminal_history.h"

#include "program/session.h"

namespace tidwen {

TerminalHistory::TerminalHistory(Mac& mac)
    : files_(mac.system.files),
      undo_(undoPorts(mac), mac.system.user),
      purge_(mac.system.files, mac.system.user, mac.administrator, mac.system.log),
      model_({mac.system.files, undo_, purge_, mac.system.defaults, mac.system.texts, queue_, queue_},
             mac.system.user) {}

const std::vector<RemovalHistoryEntry>& TerminalHistory::load(Sizes sizes) {
    model_.load(sizes);
    queue_.drain();
    return model_.entries.get();
}

template<class Result>
tl::expected<Result, Message>
TerminalHistory::await(const std::function<void(HistoryModel::Answer<Result>)>& start) {
    std::optional<tl::expected<Result, HistoryModel::Refusal>> answer;
    start([&](const auto& result) { answer = result; });
    // Up to the answer: the list, which would be loaded again next, is shown no more.
    queue_.runUntil([&] { return answer.has_value(); });
    return answer->map_error([](const HistoryModel::Refusal& refusal) {
        return refusal.reason.value_or(Message{"failure.adminCancelled"});
    });
}

std::optional<Manifest> TerminalHistory::record(const Path& root) const {
    if (auto manifest = readManifest(root, files_)) return std::move(*manifest);
    const auto run = readUnfinishedRun(root, files_);
    return run ? run->known : std::nullopt;
}

tl::expected<UndoReport, Message> TerminalHistory::undo(const Path& root, const ItemChoice& items) {
    return await<UndoReport>([&](auto answer) { model_.undo(root, items, std::move(answer)); });
}

tl::expected<QuarantinePurge::Outcome, Message>
TerminalHistory::remove(const std::vector<RemovalHistoryEntry>& chosen) {
    return await<QuarantinePurge::Outcome>([&](auto answer) { model_.remove(chosen, std::move(answer)); });
}

} // namespace tidwen
