#pragma once

#include "base/executor.h"
#include "cli/command.h"
#include "quarantine/history_model.h"
#include "quarantine/run_lookup.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The list of past runs for a command, which has nothing else to do meanwhile: each call returns when its
/// work is done. An undo and a deletion show their progress, and end after the step at hand with the first
/// Ctrl-C.
class TerminalHistory {
  public:
    using Sizes = HistoryModel::Sizes;

    TerminalHistory(const CommandContext& context, Mac& mac);

    /// In the order in which `history` numbers them from 1.
    const std::vector<RemovalHistoryEntry>& load(Sizes sizes);

    /// As they were loaded.
    const std::vector<RemovalHistoryEntry>& entries() const { return model_.entries.get(); }
    /// Runs that `load` did not read, because there is too much to read.
    std::uint64_t leftOut() const { return model_.leftOut.get().size(); }
    /// The run that a word means, as `findRun`.
    tl::expected<Path, Message> find(const std::string& word) const {
        return findRun({.entries = model_.entries.get(),
                        .unfinished = model_.unfinishedRuns.get(),
                        .leftOut = model_.leftOut.get()},
                       word);
    }
    /// Of the last load: runs that have no number.
    const std::vector<UnfinishedRun>& unfinishedRuns() const { return model_.unfinishedRuns.get(); }
    const std::optional<FileError>& unreadable() const { return model_.unreadable.get(); }
    bool isAnotherAtWork() const { return model_.isAnotherAtWork.get(); }

    /// What is known of the run in `root`: its manifest, or by its journal what can be undone now. Else why
    /// nothing is.
    tl::expected<Manifest, Message> record(const Path& root) const;

    /// The reason when nothing was done.
    tl::expected<UndoReport, Message> undo(const Path& root, const ItemChoice& items);
    /// What `undo` would do.
    tl::expected<UndoPlan, Message> planUndo(const Path& root, const ItemChoice& items) {
        return undo_.planRun(root, items);
    }
    std::optional<Message> whyNotRemove() const { return model_.whyNotRemove(); }
    tl::expected<QuarantinePurge::Outcome, Message> remove(const std::vector<RemovalHistoryEntry>& chosen);

  private:
    template<class Result>
    tl::expected<Result, Message> await(const std::string& work,
                                        const std::function<void(HistoryModel::Answer<Result>)>& start);

    /// Takes no more work once the command has its answer: the model would load the list again, which is
    /// shown no more.
    class Background : public Executor {
      public:
        void post(std::function<void()> work) override {
            if (!isClosed_) queue_.post(std::move(work));
        }
        void close() { isClosed_ = true; }

      private:
        bool isClosed_ = false; ///< the main thread's
        WorkQueue queue_;
    };

    const CommandContext& context_;
    FileSystem& files_;
    MainQueue main_;
    UndoService undo_;
    QuarantinePurge purge_;
    Background background_;
    HistoryModel model_;
};

} // namespace tidwen
