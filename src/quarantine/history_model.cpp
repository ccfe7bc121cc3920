#include "quarantine/history_model.h"

#include "quarantine/trash_lock.h"

namespace tidwen {

namespace {

using Refused = tl::unexpected<HistoryModel::Refusal>;

HistoryModel::Refusal toRefusal(Message reason) {
    return {std::move(reason)};
}

} // namespace

HistoryModel::HistoryModel(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

void HistoryModel::load(Sizes sizes, std::function<void()> done) {
    isLoading.set(true);
    ports_.background.post([this, ports = ports_, user = user_, sizes, number = ++loadsStarted_,
                            alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
        const ReadBudget budget;
        auto loaded = loadPastRuns(user, ports.files, sizes == Sizes::measured, budget);
        ports.main.post([this, alive, number, missing = budget.leftOut(), loaded = std::move(loaded),
                         done = std::move(done)]() mutable {
            if (alive.expired()) return;
            if (number == loadsStarted_) {
                leftOut.set(missing);
                unfinishedRuns.set(std::move(loaded.unfinished));
                entries.set(std::move(loaded.entries));
                isLoading.set(false);
            }
            if (done) done();
        });
    });
}

template<class Result>
void HistoryModel::run(std::string busyID, std::function<tl::expected<Result, Refusal>()> action,
                       Answer<Result> answer) {
    if (busyEntryID.get()) return;
    busyEntryID.set(std::move(busyID));
    ports_.background.post([this, ports = ports_, alive = std::weak_ptr(alive_), action = std::move(action),
                            answer = std::move(answer)]() mutable {
        auto result = action();
        ports.main.post([this, alive, result = std::move(result), answer = std::move(answer)] {
            if (alive.expired()) return;
            busyEntryID.set(std::nullopt);
            errorMessage.set(result || !result.error().reason
                                 ? std::nullopt
                                 : std::optional(ports_.texts.text(*result.error().reason)));
            if (result) publish(*result);
            if (answer) answer(result);
            if (result) load();
        });
    });
}

void HistoryModel::undo(const Path& root, Answer<UndoReport> answer) {
    run<UndoReport>(
        root.string(), [&service = ports_.undo, root] { return service.undoRun(root).map_error(toRefusal); },
        std::move(answer));
}

void HistoryModel::remove(const std::vector<RemovalHistoryEntry>& chosen,
                          Answer<QuarantinePurge::Outcome> answer) {
    if (chosen.empty()) return;
    std::vector<Path> folders;
    folders.reserve(chosen.size());
    for (const auto& entry : chosen)
        folders.push_back(entry.root);
    run<QuarantinePurge::Outcome>(
        chosen.size() == 1 ? id(chosen.front()) : user_.trash().string(),
        [ports = ports_, user = user_,
         folders = std::move(folders)]() -> tl::expected<QuarantinePurge::Outcome, Refusal> {
            if (auto problem = ports.settings.problem()) return Refused(toRefusal(std::move(*problem)));
            const auto lock = lockTrash(user, ports.files);
            if (!lock) return Refused(toRefusal(describeNotBegun(lock.error(), ports.texts)));
            auto outcome = ports.purge.purge(folders);
            if (!outcome) return Refused(Refusal{outcome.error().describe()});
            return std::move(*outcome);
        },
        std::move(answer));
}

void HistoryModel::publish(const QuarantinePurge::Outcome& outcome) {
    if (!outcome.kept.empty())
        errorMessage.set(ports_.texts.text("history.purge.kept %@", {outcome.kept.front().string()}));
}

} // namespace tidwen
