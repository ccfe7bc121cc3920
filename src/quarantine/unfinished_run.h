#pragma once

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A run without a readable manifest, which is therefore not in the history.
struct UnfinishedRun {
    enum class Problem {
        interrupted,        ///< not yet recovered, or its manifest could not be written
        unsettled,          ///< interrupted, with items at neither of their two places
        unreadableJournal,  ///< interrupted; its plan is unknown
        unreadableManifest, ///< ended; what it moved is unknown
    };
    Path root;
    Problem problem = Problem::interrupted;
    /// What of it can be undone now according to its journal, and what is missing; absent if the journal is
    /// unreadable.
    std::optional<Manifest> known = {};
    std::vector<std::string> unsettled = {}; ///< old paths of items at neither place
    /// The folder its record names, if that is another one: this folder was copied or renamed.
    std::optional<Path> recordOf = {};
    bool isCopy = false; ///< `recordOf` exists too

    /// What the user can do about it.
    Message advice() const;
    /// Why it cannot be undone when nothing of it is known.
    Message whyNoUndo() const;
    friend bool operator==(const UnfinishedRun&, const UnfinishedRun&) = default;
};

/// The JSON value ("interrupted" …).
std::string_view name(UnfinishedRun::Problem problem);

/// The run in the quarantine folder `root` in its current state; nullopt with a readable manifest or without
/// either document. Changes nothing.
std::optional<UnfinishedRun> readUnfinishedRun(const Path& root, const FileSystem& files);

/// The same for a folder without a readable manifest. A damaged manifest beside a valid journal counts as
/// none: it is rebuilt from the journal.
std::optional<UnfinishedRun> readRunWithoutManifest(const Path& root, const FileSystem& files);

} // namespace tidwen
