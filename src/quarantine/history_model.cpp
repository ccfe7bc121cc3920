#include "quarantine/history_model.h"

#include "base/background_step.h"
#include "base/message.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_documents.h"
#include "quarantine/run_items.h"
#include "quarantine/trash_lock.h"
#include "scan/permissions/full_disk_access.h"

namespace tidwen {

namespace {

using Refused = tl::unexpected<HistoryModel::Refusal>;

HistoryModel::Refusal toRefusal(Message reason) {
    return {std::move(reason)};
}

/// Called only when something looks interrupted, because it takes the lock for a moment.
bool isAnotherIn(const Path& trash, FileSystem& files) {
    const auto lock = files.lock(trash);
    return !lock && lock.error().fault == FileFault::busy;
}

/// Why the Trash could not be read, with what helps where macOS withholds it.
Message describe(const FileError& fault, const UserEnvironment& user, const FileSystem& files) {
    if (auto closed = whyNothingMoves(user, files)) return std::move(*closed);
    return {"history.unreadable %@ %@", {fault.path.string(), Message{std::string(failureKey(fault.fault))}}};
}

} // namespace

HistoryModel::HistoryModel(Ports ports, UserEnvironment user)
    : ports_(ports), user_(std::move(user)), work_(ports.main, progress) {}

void HistoryModel::load(Sizes sizes, std::function<void()> done) {
    isLoading.set(true);
    struct Loaded {
        PastRuns runs;
        bool isAnotherAtWork = false;
        std::optional<Message> unreadable = {};
    };
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&files = ports_.files, user = user_, sizes] {
            Loaded loaded{loadPastRuns(user, files, sizes == Sizes::measured)};
            if (const auto& fault = loaded.runs.unreadable) loaded.unreadable = describe(*fault, user, files);
            loaded.isAnotherAtWork = !loaded.runs.unfinished.empty() && isAnotherIn(user.trash(), files);
            return loaded;
        },
        [number = ++loadsStarted_, done = std::move(done)](HistoryModel& self, Loaded loaded) {
            if (number != self.loadsStarted_) return;
            self.unreadable.set(std::move(loaded.unreadable));
            self.publish(std::move(loaded.runs), loaded.isAnotherAtWork);
            if (done) done();
        });
}

template<class Result, class Action>
void HistoryModel::run(std::string busyID, Action action, Answer<Result> answer) {
    if (busyEntryID.get()) {
        if (answer) answer(Refused(toRefusal({"history.busy"})));
        return;
    }
    forgetOutcome();
    isDeleting_ = std::is_same_v<Result, QuarantinePurge::Outcome>;
    busyEntryID.set(std::move(busyID));
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [action = std::move(action), control = work_.begin()] { return action(control); },
        [answer = std::move(answer)](HistoryModel& self, tl::expected<Result, Refusal> result) {
            self.work_.end();
            self.busyEntryID.set(std::nullopt);
            self.error.set(result ? std::nullopt : result.error().reason);
            if (result) self.publish(*result);
            if (answer) answer(result);
            if (result) self.load();
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
                          Answer<QuarantinePurge::Outcome> answer, QuarantinePurge::CutOffUndo cutOffUndo) {
    std::vector<Path> folders;
    folders.reserve(chosen.size());
    for (const auto& entry : chosen)
        folders.push_back(entry.root);
    run<QuarantinePurge::Outcome>(
        chosen.size() == 1 ? id(chosen.front()) : user_.trash().string(),
        [ports = ports_, user = user_, folders = std::move(folders),
         cutOffUndo](const StepControl& control) -> tl::expected<QuarantinePurge::Outcome, Refusal> {
            if (auto problem = ports.settings.problem()) return Refused(toRefusal(std::move(*problem)));
            if (folders.empty() && !ports.files.exists(user.trash())) return QuarantinePurge::Outcome();
            const auto lock = lockTrash(user, ports.files);
            if (!lock) return Refused(toRefusal(lock.error()));
            auto outcome = ports.purge.purge(folders, control, cutOffUndo);
            if (!outcome) return Refused(Refusal{outcome.error().describe()});
            const auto left = listQuarantineFolders(user, ports.files);
            for (const auto& root : left.value_or(std::vector<Path>{}))
                (void)dropEmptyRun(root, ports.files);
            return std::move(*outcome);
        },
        std::move(answer));
}

void HistoryModel::forgetOutcome() {
    lastUndo.set(std::nullopt);
    error.set(std::nullopt);
}

void HistoryModel::publish(PastRuns runs, bool isBusy) {
    leftOut.set(std::move(runs.leftOut));
    isAnotherAtWork.set(isBusy);
    unfinishedRuns.set(isBusy ? std::vector<UnfinishedRun>() : std::move(runs.unfinished));
    entries.set(std::move(runs.entries));
    isLoading.set(false);
}

void HistoryModel::publish(const QuarantinePurge::Outcome& outcome) {
    if (!outcome.kept.empty()) error.set(Message{"history.purge.kept %@", {outcome.kept.front().string()}});
}

} // namespace tidwen
