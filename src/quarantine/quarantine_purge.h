#pragma once

#include "base/log.h"
#include "base/step_progress.h"
#include "operations/admin_script_runner.h"
#include "quarantine/history.h"

#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Deletes quarantine folders for good: the only place where Tidwen deletes what was somebody's. Never
/// reaches outside the Trash, also not through a link.
class QuarantinePurge {
  public:
    struct Failure {
        enum class Kind {
            notAQuarantineFolder,
            escapesThroughSymlink,
            unsettled,  ///< its journal is there and no manifest that says it has ended
            undoCutOff, ///< a copy that an undo did not finish lies beside an old place
            elevatedDeleteFailed,
            authorizationCancelled
        };
        Kind kind = Kind::notAQuarantineFolder;
        std::string text;                     ///< the path, or what the administrator script printed
        std::optional<Message> noScript = {}; ///< why the script could not run or end
        /// Nothing for a dismissed prompt, which is silent everywhere.
        std::optional<Message> describe() const;
        friend bool operator==(const Failure&, const Failure&) = default;
    };

    struct Outcome {
        int removedFolders = 0;
        std::vector<Path> kept; ///< folders that could not be removed; the reason is in the log
        /// Those of `kept` that are whole, because they hold what only root could delete.
        std::vector<Path> othersItems = {};
        std::vector<Path> notBegun = {}; ///< of `kept`: it was told to stop before them
    };

    /// Runs a shell script as an administrator; absent on a volume, where there is nobody to ask.
    using Administrator = std::optional<AdminScriptRunner::Execute>;

    QuarantinePurge(FileSystem& files, UserEnvironment user, Administrator administrator, Log& log)
        : files_(files), user_(std::move(user)), administrator_(std::move(administrator)), log_(log) {}

    /// Removes the folders whose run is older than `days` (0: none), with the user's own rights and without a
    /// prompt. A run that holds anything of another owner stays as a whole. Gives the number removed.
    int purgeExpired(int days, Timestamp now, const StepControl& control = {});

    /// Removes the given folders. Each is validated first; when one is refused nothing is deleted. Items that
    /// belong to somebody else go through one administrator script; without one a run that holds any stays as
    /// a whole. A step is one run; told to stop, it deletes the run at hand and keeps the others.
    tl::expected<Outcome, Failure> purge(const std::vector<Path>& folders, const StepControl& control = {});

  private:
    std::optional<Failure> validate(const Path& folder) const;
    FileResult<void> removeRun(const Path& folder);
    bool isWhollyOurs(const Path& folder) const;
    /// The direct children that root must delete.
    std::vector<Path> foreignItems(const Path& folder) const;
    class HiddenItems;
    /// Gives items their names again that a kill during a prompt left hidden.
    void showHiddenItems(const Path& folder);
    std::optional<Failure> removeAsAdministrator(const std::vector<Path>& items);

    FileSystem& files_;
    UserEnvironment user_;
    Administrator administrator_;
    Log& log_;
};

/// The runs that started more than `days` days before `now`. A run dated in the future (a clock that was set
/// back) is never expired.
std::vector<RemovalHistoryEntry> expiredEntries(const std::vector<RemovalHistoryEntry>& entries, int days,
                                                Timestamp now);

/// The shell script that deletes items of other owners: they are first moved into a fresh folder that only
/// root can enter, so that nothing can be put in their place while they are deleted.
std::string purgeScript(const std::vector<Path>& items);

} // namespace tidwen
