#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/texts.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The list of past runs, and what can be done with them. Belongs to the main thread; one undo or deletion
/// runs at a time, in the background.
class HistoryModel {
  public:
    struct Ports {
        FileSystem& files;
        UndoService& undo;
        QuarantinePurge& purge;
        const Texts& texts;
        Executor& main;
        Executor& background;
    };

    HistoryModel(Ports ports, UserEnvironment user);

    Property<std::vector<RemovalHistoryEntry>> entries;
    Property<bool> isLoading{false};
    Property<std::optional<std::string>> busyEntryID; ///< the folder's path
    Property<std::optional<UndoReport>> lastUndo;
    Property<std::optional<std::string>> errorMessage;

    void load(std::function<void()> done = {});
    /// Each of these is ignored while another one runs; the list is loaded again afterwards.
    void undo(const RemovalHistoryEntry& entry, std::function<void()> done = {});
    void remove(const RemovalHistoryEntry& entry, std::function<void()> done = {});
    void removeAll(std::function<void()> done = {});

    static std::string id(const RemovalHistoryEntry& entry) { return entry.root.string(); }

  private:
    void purge(std::vector<Path> folders, const std::string& busyID, std::function<void()> done);
    void finish(std::optional<std::string> error, std::function<void()> done);

    Ports ports_;
    UserEnvironment user_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
