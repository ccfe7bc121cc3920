#include "quarantine/history_model.h"

#include "quarantine/quarantine_layout.h"
#include "quarantine/run_documents.h"
#include "quarantine/trash_lock.h"

namespace tidwen {

namespace {

using Refused = tl::unexpected<HistoryModel::Refusal>;

HistoryModel::Refusal toRefusal(Message reason) {
    return {std::move(reason)};
}

/// Asked only where something looks cut off: to ask is to hold the lock for a moment.
bool isAnotherIn(const Path& trash, FileSystem& files) {
    const auto lock = files.lock(trash);
    return !lock && lock.error().fault == FileFault::busy;
}

} // namespace

HistoryModel::HistoryModel(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

void HistoryModel::load(Sizes sizes, std::function<void()> done) {
    isLoading.set(true);
    ports_.background.post([this, ports = ports_, user = user_, sizes, number = ++loadsStarted_,
                            alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
        auto loaded = loadPastRuns(user, ports.files, sizes == Sizes::measured);
        const bool isBusy = !loaded.unfinished.empty() && isAnotherIn(user.trash(), ports.files);
        ports.main.post(
            [this, alive, number, isBusy, loaded = std::move(loaded), done = std::move(done)]() mutable {
                if (alive.expired()) return;
                if (number == loadsStarted_) publish(std::move(loaded), isBusy);
                if (done) done();
            });
    });
}

template<class Result>
void HistoryModel::run(std::string busyID,
                       std::function<tl::expected<Result, Refusal>(const StepControl&)> action,
                       Answer<Result> answer) {
    if (busyEntryID.get()) return;
    busyEntryID.set(std::move(busyID));
    stop_ = StopSource();
    relay_.emplace(ports_.main, [this](const StepProgress& step) { progress.set(step); });
    ports_.background.post([this, ports = ports_, alive = std::weak_ptr(alive_), action = std::move(action),
                            control = StepControl{stop_.token(), relay_->observer()},
                            answer = std::move(answer)]() mutable {
        auto result = action(control);
        ports.main.post([this, alive, result = std::move(result), answer = std::move(answer)] {
            if (alive.expired()) return;
            relay_.reset();
            progress.set(std::nullopt);
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

void HistoryModel::undo(const Path& root, const ItemChoice& items, Answer<UndoReport> answer) {
    run<UndoReport>(
        root.string(),
        [&service = ports_.undo, root, items](const StepControl& control) {
            return service.undoRun(root, items, control).map_error(toRefusal);
        },
        std::move(answer));
}

void HistoryModel::remove(const std::vector<RemovalHistoryEntry>& chosen,
                          Answer<QuarantinePurge::Outcome> answer) {
    std::vector<Path> folders;
    folders.reserve(chosen.size());
    for (const auto& entry : chosen)
        folders.push_back(entry.root);
    run<QuarantinePurge::Outcome>(
        chosen.size() == 1 ? id(chosen.front()) : user_.trash().string(),
        [ports = ports_, user = user_, folders = std::move(folders)](
            const StepControl& control) -> tl::expected<QuarantinePurge::Outcome, Refusal> {
            if (auto problem = ports.settings.problem()) return Refused(toRefusal(std::move(*problem)));
            if (folders.empty() && !ports.files.exists(user.trash())) return QuarantinePurge::Outcome();
            const auto lock = lockTrash(user, ports.files);
            if (!lock) return Refused(toRefusal(describeNotBegun(lock.error(), ports.texts)));
            auto outcome = ports.purge.purge(folders, control);
            if (!outcome) return Refused(Refusal{outcome.error().describe()});
            const auto left = listQuarantineFolders(user, ports.files);
            for (const auto& root : left.value_or(std::vector<Path>{}))
                (void)dropEmptyRun(root, ports.files);
            return std::move(*outcome);
        },
        std::move(answer));
}

void HistoryModel::publish(PastRuns runs, bool isBusy) {
    leftOut.set(std::move(runs.leftOut));
    unreadable.set(std::move(runs.unreadable));
    isAnotherAtWork.set(isBusy);
    unfinishedRuns.set(isBusy ? std::vector<UnfinishedRun>() : std::move(runs.unfinished));
    entries.set(std::move(runs.entries));
    isLoading.set(false);
}

void HistoryModel::publish(const QuarantinePurge::Outcome& outcome) {
    if (!outcome.kept.empty())
        errorMessage.set(ports_.texts.text("history.purge.kept %@", {outcome.kept.front().string()}));
}

} // namespace tidwen
