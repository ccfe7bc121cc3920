#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/path.h"
#include "cli/command.h"
#include "platform/file_system.h"
#include "program/mac.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/run_items.h"
#include "quarantine/run_lookup.h"
#include "quarantine/undo_run.h"
#include "quarantine/undo_service.h"
#include "quarantine/unfinished_run.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The list of past runs for a command: each call blocks until its work is done. An undo and a deletion show
/// their progress and stop after the current step at the first Ctrl-C.
class TerminalHistory {
  public:
    using Sizes = HistoryModel::Sizes;

    TerminalHistory(const CommandContext& context, Mac& mac);

    /// In the order in which `history` numbers them from 1.
    const std::vector<RemovalHistoryEntry>& load(Sizes sizes);

    /// As last loaded.
    const std::vector<RemovalHistoryEntry>& entries() const { return model_.entries.get(); }
    /// Runs that `load` did not read because the read budget was exhausted.
    std::uint64_t leftOut() const { return model_.leftOut.get().size(); }
    /// The run that a word means, see `findRun`.
    tl::expected<Path, Message> find(const std::string& word) const {
        return findRun({.entries = model_.entries.get(),
                        .unfinished = model_.unfinishedRuns.get(),
                        .leftOut = model_.leftOut.get()},
                       word);
    }
    /// Runs of the last load that have no number.
    const std::vector<UnfinishedRun>& unfinishedRuns() const { return model_.unfinishedRuns.get(); }
    const std::optional<Message>& unreadable() const { return model_.unreadable.get(); }
    bool isAnotherAtWork() const { return model_.isAnotherAtWork.get(); }

    /// What is known of the run in `root`: its manifest, or what its journal says can be undone now.
    /// Otherwise the reason why neither is.
    tl::expected<Manifest, Message> record(const Path& root) const;

    /// The error is the reason why nothing was done.
    tl::expected<UndoReport, Message> undo(const Path& root, const ItemChoice& items);
    /// What `undo` would do.
    tl::expected<UndoPlan, Message> planUndo(const Path& root, const ItemChoice& items) {
        return undo_.planRun(root, items);
    }
    std::optional<Message> whyNotRemove() const { return model_.whyNotRemove(); }
    tl::expected<QuarantinePurge::Outcome, Message> remove(const std::vector<RemovalHistoryEntry>& chosen,
                                                           QuarantinePurge::CutOffUndo cutOffUndo);

  private:
    template<class Result>
    tl::expected<Result, Message> await(const std::string& work,
                                        const std::function<void(HistoryModel::Answer<Result>)>& start);

    /// Rejects work after the command has its answer: the model would reload the list, which is not shown
    /// again.
    class Background : public Executor {
      public:
        void post(std::function<void()> work) override {
            if (!isClosed_) queue_.post(std::move(work));
        }
        void close() { isClosed_ = true; }

      private:
        bool isClosed_ = false; ///< main thread only
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
