#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/problem.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "operations/privileged_runner.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"

#include <optional>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What an undo put back, and what not.
struct UndoReport {
    int restoredCount = 0;
    int totalCount = 0;
    std::vector<Problem> failures; ///< each with its path, or the label of a job
    int relaunchedJobs = 0;
    std::vector<Path> renamed = {}; ///< where items went whose old place is taken
    int alreadyBack = 0;            ///< items that lie in their old place again; neither tried nor failed
    /// Applications took part. What a removal does to these besides moves and jobs, no run records: it resets
    /// permissions and deletes passwords, for good.
    bool mayHaveLost = false;
    friend bool operator==(const UndoReport&, const UndoReport&) = default;
};

/// Where an item of a run would go back to now, or why it would not.
struct PlannedReturn {
    Path oldPlace;
    Path quarantined;
    /// The old place, or a name beside it when that is taken; absent with a problem.
    std::optional<Path> destination = {};
    std::optional<Message> problem = {};
    bool requiresRoot = false;
};

struct UndoPlan {
    std::vector<PlannedReturn> items;
    std::vector<std::string> jobs; ///< labels of jobs that would be loaded again
    int alreadyBack = 0;           ///< items that lie in their old place
};

/// Puts a run's items back and loads their jobs again. The manifest is not trusted: every move is screened,
/// and what is looked for in vain is looked for a bounded number of times.
class UndoService {
  public:
    struct Ports {
        FileSystem& files;
        PrivilegedRunner& privilegedRunner; ///< moves that need an administrator and system jobs, one batch
        PrivilegedRunner& userRunner;       ///< jobs of the user's own session
        const Texts& texts;
        Log& log;
        const Clock& clock;
        bool runsJobs = true; ///< false on a volume: nothing is loaded there, so no job waits to be
    };

    UndoService(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

    /// Of the items chosen; an item that lies in a folder which is in quarantine, too, waits for that. Told
    /// to stop, it ends after the step at hand: what was not begun is among the failures, and another undo
    /// brings it back.
    UndoReport undo(const Manifest& manifest, const ItemChoice& items = {}, const StepControl& control = {});

    /// The undo of the run in the quarantine folder `root`, the same for every caller: locks the Trash, reads
    /// the run's manifest again (of a run that was cut off, its journal) and undoes what is left. Gives the
    /// reason when nothing was begun: another process is at work, nothing is left, nobody can tell what was
    /// moved. A run that was cut off gets its manifest in the end, as a recovery would give it, unless
    /// something of it is still on its way. Blocks.
    tl::expected<UndoReport, Message> undoRun(const Path& root, const ItemChoice& items = {},
                                              const StepControl& control = {});

    /// What `undoRun` would do now, by the same rules and refusals. Only looks, and needs no lock.
    tl::expected<UndoPlan, Message> planRun(const Path& root, const ItemChoice& items = {});

  private:
    enum class Settling { done, leftOut };
    tl::expected<Manifest, Message> whatIsLeft(const Path& root, Settling settling) const;
    /// An earlier undo that was cut off may have begun copies beside places that this one does not take.
    void dropBegunCopies(const Manifest& manifest) const;
    /// Gives a run that was cut off its manifest, once nothing of it is unsettled.
    void finishInterruptedRun(Manifest known) const;

    Ports ports_;
    UserEnvironment user_;
};

/// Where an item goes back to: its old place, or "Name 2.ext" … "Name 999.ext" beside what took it, or a name
/// with a fresh UUID and no extension. Names in `taken` count as existing; those before the number `first`
/// are not looked at, and it becomes the number that was given.
Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken = {});
Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken, int& first);

} // namespace tidwen
