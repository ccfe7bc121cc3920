#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "quarantine/manifest.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A run that has no readable manifest, and so is no entry of the history.
struct UnfinishedRun {
    enum class Problem {
        interrupted,        ///< cut off; recovery has not looked at it yet, or could not write its manifest
        unsettled,          ///< cut off, and some of its items are at neither of their two places
        unreadableJournal,  ///< cut off, and nobody can tell what it planned
        unreadableManifest, ///< ended, and nobody can tell what it moved
    };
    Path root;
    Problem problem = Problem::interrupted;
    /// What of it can be undone now, by its journal, and what is missing; absent when that cannot be read.
    std::optional<Manifest> known = {};
    std::vector<std::string> unsettled = {}; ///< the old places of items that are at neither place
    /// The folder that its record is of, when that is another one: this one was copied or renamed.
    std::optional<Path> recordOf = {};
    bool isCopy = false; ///< `recordOf` is there, too

    /// What the user can do about it.
    Message advice() const;
    /// Why it cannot be undone when nothing of it is known.
    Message whyNoUndo(const Texts& texts) const;
    friend bool operator==(const UnfinishedRun&, const UnfinishedRun&) = default;
};

/// "interrupted" and so on, as in JSON.
std::string_view name(UnfinishedRun::Problem problem);

/// The run in the quarantine folder `root`, by what lies there now; nothing when it has a readable manifest
/// or neither of the two documents. Only looks.
std::optional<UnfinishedRun> readUnfinishedRun(const Path& root, const FileSystem& files);

/// The same of a folder in which no readable manifest was found. A damaged one beside a whole journal counts
/// as none: it is made anew from the journal.
std::optional<UnfinishedRun> readRunWithoutManifest(const Path& root, const FileSystem& files);

} // namespace tidwen
