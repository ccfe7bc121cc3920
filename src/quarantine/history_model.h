#pragma once

#include "base/executor.h"
#include "base/followed_work.h"
#include "base/observable.h"
#include "base/texts.h"
#include "platform/defaults.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"
#include "quarantine/unfinished_run.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The list of past runs, and what can be done with them. Belongs to the main thread; one undo or deletion
/// runs at a time, in the background, and holds the lock of the Trash.
class HistoryModel {
  public:
    struct Ports {
        FileSystem& files;
        UndoService& undo;
        QuarantinePurge& purge;
        const Defaults& settings;
        const Texts& texts;
        Executor& main;
        Executor& background;
    };

    /// Why nothing was done; without words when the user dismissed the administrator's prompt.
    struct Refusal {
        std::optional<Message> reason;
    };
    /// Called on the main thread with what an action came to, before the list is loaded again.
    template<class Result>
    using Answer = std::function<void(const tl::expected<Result, Refusal>&)>;

    enum class Sizes { measured, leftOut };

    HistoryModel(Ports ports, UserEnvironment user);

    Property<std::vector<RemovalHistoryEntry>> entries; ///< newest first
    Property<std::vector<Path>> leftOut; ///< runs that were not read, because there is too much to read
    Property<std::vector<UnfinishedRun>> unfinishedRuns; ///< what `entries` cannot show, by folder name
    Property<std::optional<FileError>>
        unreadable; ///< why the Trash could not be read: nothing is known of it
    /// Another process works in the Trash: what looks cut off may be its run, so `unfinishedRuns` is empty.
    Property<bool> isAnotherAtWork{false};
    Property<bool> isLoading{false};
    Property<std::optional<std::string>> busyEntryID; ///< see `id`; the Trash while several are deleted
    Property<std::optional<StepProgress>> progress;   ///< the step at hand of what runs
    Property<std::optional<UndoReport>> lastUndo;
    Property<std::optional<Message>> error; ///< why the last undo or deletion was not done, or not wholly
    /// The same in words.
    std::optional<std::string> errorMessage() const {
        const auto& why = error.get();
        return why ? std::optional(ports_.texts.text(*why)) : std::nullopt;
    }

    /// Reads the runs again. Of several loads at once the last one started wins.
    void load(Sizes sizes = Sizes::measured, std::function<void()> done = {});

    /// Each of these is ignored, and `answer` never called, while another one runs. After a refusal the list
    /// stays as it was; otherwise it is loaded again.
    void undo(const RemovalHistoryEntry& entry, Answer<UndoReport> answer = {}) {
        undo(entry.root, std::move(answer));
    }
    /// Also of a run that was cut off, and of single items of a run.
    void undo(const Path& root, Answer<UndoReport> answer = {}) { undo(root, {}, std::move(answer)); }
    void undo(const Path& root, const ItemChoice& items, Answer<UndoReport> answer = {});
    /// Refused while `whyNotRemove` gives a reason. Quarantine folders in which nothing ever lay go along.
    void remove(const std::vector<RemovalHistoryEntry>& chosen, Answer<QuarantinePurge::Outcome> answer = {});
    void removeAll(Answer<QuarantinePurge::Outcome> answer = {}) { remove(entries.get(), std::move(answer)); }

    /// Ends an undo or a deletion after the step at hand.
    void stop() { work_.stop(); }

    /// Why nothing is deleted for good: who does not know the settings does not know how long the user wants
    /// to keep what would go.
    std::optional<Message> whyNotRemove() const { return ports_.settings.problem(); }

    static std::string id(const RemovalHistoryEntry& entry) { return entry.root.string(); }

  private:
    template<class Result>
    void run(std::string busyID, std::function<tl::expected<Result, Refusal>(const StepControl&)> action,
             Answer<Result> answer);
    void publish(const UndoReport& report) { lastUndo.set(report); }
    void publish(const QuarantinePurge::Outcome& outcome);
    void publish(PastRuns runs, bool isAnotherAtWork);

    Ports ports_;
    UserEnvironment user_;
    FollowedWork work_;
    int loadsStarted_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
