#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/timestamp.h"
#include "operations/admin_script_runner.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "posix/posix_process_runner.h"
#include "quarantine/history.h"

#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Deletes quarantine folders permanently: the only place where Tidwen deletes user data. Never outside the
/// Trash, nor through a link.
class QuarantinePurge {
  public:
    struct Failure {
        enum class Kind {
            notAQuarantineFolder,
            escapesThroughSymlink,
            unsettled,     ///< it has a journal and no manifest, so it has not ended
            undoCutOff,    ///< an unfinished copy of an undo is beside an old place
            undoUnknown,   ///< the folder of an old place, in which such a copy may be, cannot be listed
            restOfRemoval, ///< what the removal left beside an old place, or copied of a missing item
            elevatedDeleteFailed,
            authorizationCancelled
        };
        Kind kind = Kind::notAQuarantineFolder;
        std::string text;                     ///< the path, or the output of the administrator script
        std::optional<Message> noScript = {}; ///< why the script could not be run or completed
        /// nullopt for a dismissed prompt, which is never reported.
        std::optional<Message> describe() const;
        friend bool operator==(const Failure&, const Failure&) = default;
    };

    /// What happens to a run that alone records what an undo or the removal left when it was cut off.
    enum class CutOffUndo {
        refuse, ///< with everything else, because this run was asked for
        keep,   ///< the others are removed
    };

    struct Outcome {
        int removedFolders = 0;
        std::vector<Path> kept; ///< could not be removed; the log has the reasons
        /// Those of `kept` that are complete, because they contain items that only root can delete.
        std::vector<Path> othersItems = {};
        std::vector<Path> notBegun = {}; ///< of `kept`: not begun when it was stopped
        /// Of `kept`: why those stay that alone record what an undo or the removal left when it was cut off.
        std::map<Path, Failure> cutOffUndos = {};
    };

    /// Runs a shell script as an administrator; absent on a volume, where no prompt is possible.
    using Administrator = std::optional<AdminScriptRunner::Execute>;

    /// With `trash` closed to root, what root is to delete waits beside the Trash for it.
    QuarantinePurge(FileSystem& files, UserEnvironment user, Administrator administrator, Log& log,
                    AdminScriptRunner::Trash trash = AdminScriptRunner::Trash::openToRoot)
        : files_(files),
          user_(std::move(user)),
          administrator_(std::move(administrator)),
          log_(log),
          trash_(trash) {}

    /// Removes runs older than `days` (0: none) with the user's own permissions and without a prompt. A run
    /// that contains anything of another owner is kept completely. Returns the number removed.
    int purgeExpired(int days, Timestamp now, const StepControl& control = {});

    /// Removes the given folders. All are validated first; if one is refused nothing is deleted. Items of
    /// other owners are deleted by one administrator script; without one their runs are kept completely. A
    /// step is one run; when stopped, it completes the current run and keeps the others.
    tl::expected<Outcome, Failure> purge(const std::vector<Path>& folders, const StepControl& control = {},
                                         CutOffUndo cutOffUndo = CutOffUndo::refuse);

  private:
    std::optional<Failure> validate(const Path& folder) const;
    tl::expected<std::vector<Path>, Failure> deletable(const std::vector<Path>& chosen, CutOffUndo cutOffUndo,
                                                       Outcome& outcome) const;
    std::optional<Failure> removeForeignItems(const std::vector<Path>& folders, const StepControl& control);
    void removeUnlessOthers(const Path& folder, Outcome& outcome);
    FileResult<void> removeRun(const Path& folder);
    FileResult<void> removeMarked(const Path& entry);
    bool isWhollyOurs(const Path& folder) const;
    /// The direct children that only root can delete.
    std::vector<Path> foreignItems(const Path& folder) const;
    class HiddenItems;
    /// Puts back items that a kill during a prompt left hidden.
    void showHiddenItems(const Path& folder);
    std::optional<Failure> removeAsAdministrator(const std::vector<Path>& items);

    FileSystem& files_;
    UserEnvironment user_;
    Administrator administrator_;
    Log& log_;
    AdminScriptRunner::Trash trash_;
};

/// Runs started more than `days` days before `now`. A run dated in the future (a clock that was set back)
/// never expires.
std::vector<RemovalHistoryEntry> expiredEntries(const std::vector<RemovalHistoryEntry>& entries, int days,
                                                Timestamp now);

/// The shell script that deletes items of other owners. It first moves them into a new folder that only root
/// can enter, so that they cannot be replaced while they are deleted.
std::string purgeScript(const std::vector<Path>& items);

} // namespace tidwen
