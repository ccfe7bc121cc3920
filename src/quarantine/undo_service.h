#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "base/problem.h"
#include "base/step_progress.h"
#include "base/timestamp.h"
#include "operations/privileged_runner.h"
#include "platform/file_system.h"
#include "platform/launchd.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/not_undone.h"
#include "quarantine/run_items.h"

#include <optional>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What an undo put back, and what it did not.
struct UndoReport {
    int restoredCount = 0;
    int totalCount = 0;
    std::vector<Problem> failures;  ///< each with its path, or a job's label
    int relaunchedJobs = 0;         ///< without those that are switched off
    std::vector<Path> renamed = {}; ///< new paths of items whose old path is taken
    int alreadyBack = 0;            ///< items already at their old path; neither tried nor failed
    NotUndone lost = NotUndone::nothing;
    friend bool operator==(const UndoReport&, const UndoReport&) = default;
};

/// Where an undo would put an item, or why it would not.
struct PlannedReturn {
    Path oldPlace;
    Path quarantined;
    /// The old path, or a name beside it when that is taken; absent with a problem.
    std::optional<Path> destination = {};
    std::optional<Message> problem = {};
    bool requiresRoot = false;
};

struct UndoPlan {
    std::vector<PlannedReturn> items;
    std::vector<std::string> jobs; ///< labels of jobs that would be loaded
    int alreadyBack = 0;           ///< items already at their old path
};

/// Puts a run's items back and loads their jobs. The manifest is untrusted: the safety policy checks every
/// move, and the number of futile searches is limited.
class UndoService {
  public:
    struct Ports {
        FileSystem& files;
        PrivilegedRunner& privilegedRunner; ///< administrator moves and system jobs, in one batch
        PrivilegedRunner& userRunner;       ///< jobs of the user's session
        Log& log;
        const Clock& clock;
        bool runsJobs = true; ///< false on a volume: jobs are never loaded there
        const Launchd* launchd =
            nullptr; ///< which jobs are switched off; null: only their property lists say
    };

    UndoService(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

    /// Undoes the selected items. An item inside a folder that is also in quarantine waits for that folder.
    /// When stopped, it ends after the current step: the rest is among the failures and can be undone later.
    UndoReport undo(const Manifest& manifest, const ItemChoice& items = {}, const StepControl& control = {});

    /// Undoes the run in the quarantine folder `root`; the entry point for all callers. Locks the Trash,
    /// rereads the manifest (for an interrupted run, the journal) and undoes what is left. The error says why
    /// nothing was begun: another process is running, nothing is left, or the documents do not say what was
    /// moved. An interrupted run then gets the manifest that a recovery would write, unless an item is
    /// unsettled. Blocks.
    tl::expected<UndoReport, Message> undoRun(const Path& root, const ItemChoice& items = {},
                                              const StepControl& control = {});

    /// What `undoRun` would do now, by the same rules and with the same errors. Changes nothing and needs no
    /// lock.
    tl::expected<UndoPlan, Message> planRun(const Path& root, const ItemChoice& items = {});

  private:
    enum class Settling { done, leftOut };
    tl::expected<Manifest, Message> whatIsLeft(const Path& root, Settling settling) const;
    /// Removes copies that an earlier, interrupted undo began beside places that this one does not use.
    void dropBegunCopies(const Manifest& manifest) const;
    /// Writes the manifest of an interrupted run once nothing of it is unsettled.
    void finishInterruptedRun(Manifest known) const;

    Ports ports_;
    UserEnvironment user_;
};

} // namespace tidwen
