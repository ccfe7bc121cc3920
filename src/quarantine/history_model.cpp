#include "quarantine/history_model.h"

#include "quarantine/trash_lock.h"

namespace tidwen {

HistoryModel::HistoryModel(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

void HistoryModel::load(std::function<void()> done) {
    isLoading.set(true);
    ports_.background.post([this, ports = ports_, user = user_, alive = std::weak_ptr(alive_),
                            done = std::move(done)]() mutable {
        auto loaded = loadHistory(user, ports.files, true);
        ports.main.post([this, alive, loaded = std::move(loaded), done = std::move(done)]() mutable {
            if (alive.expired()) return;
            entries.set(std::move(loaded));
            isLoading.set(false);
            if (done) done();
        });
    });
}

void HistoryModel::undo(const RemovalHistoryEntry& entry, std::function<void()> done) {
    if (busyEntryID.get()) return;
    busyEntryID.set(id(entry));
    ports_.background.post([this, ports = ports_, user = user_, manifest = entry.manifest,
                            alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
        std::optional<UndoReport> report;
        std::optional<std::string> error;
        if (const auto lock = lockTrash(user, ports.files))
            report = ports.undo.undo(manifest);
        else
            error = ports.texts.text(failureKey(lock.error().fault));
        ports.main.post([this, alive, report = std::move(report), error = std::move(error),
                         done = std::move(done)]() mutable {
            if (alive.expired()) return;
            if (report) lastUndo.set(std::move(report));
            finish(std::move(error), std::move(done));
        });
    });
}

void HistoryModel::remove(const RemovalHistoryEntry& entry, std::function<void()> done) {
    purge({entry.root}, id(entry), std::move(done));
}

void HistoryModel::removeAll(std::function<void()> done) {
    std::vector<Path> folders;
    for (const auto& entry : entries.get())
        folders.push_back(entry.root);
    if (!folders.empty()) purge(std::move(folders), user_.trash().string(), std::move(done));
}

void HistoryModel::purge(std::vector<Path> folders, const std::string& busyID, std::function<void()> done) {
    if (busyEntryID.get()) return;
    busyEntryID.set(busyID);
    ports_.background.post([this, ports = ports_, user = user_, folders = std::move(folders),
                            alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
        std::optional<Message> problem;
        if (const auto lock = lockTrash(user, ports.files)) {
            if (const auto outcome = ports.purge.purge(folders); !outcome)
                problem = outcome.error().describe();
        } else {
            problem = Message{std::string(failureKey(lock.error().fault))};
        }
        auto error = problem ? std::optional(ports.texts.text(*problem)) : std::nullopt;
        ports.main.post([this, alive, error = std::move(error), done = std::move(done)]() mutable {
            if (!alive.expired()) finish(std::move(error), std::move(done));
        });
    });
}

void HistoryModel::finish(std::optional<std::string> error, std::function<void()> done) {
    busyEntryID.set(std::nullopt);
    errorMessage.set(error);
    if (error && done) return done(); // the list stays as it was
    if (!error) load(std::move(done));
}

} // namespace tidwen
