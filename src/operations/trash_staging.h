#pragma once

#include "base/message.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

#include <optional>
#include <tl/expected.hpp>

namespace tidwen {

/// Takes root's moves past a Trash that root's shell may not enter. Its part of a move begins or ends in a
/// staging folder, `<home>/Library/Application Support/Tidwen/Staging/<run>/…`, laid out like the run's
/// folder in the Trash. The user's own process, which may enter the Trash, moves the numbered folder around
/// the item from one to the other: that folder is the user's, whoever owns the item in it.
///
/// A staging place follows from the place in the Trash, so the journal and the manifest name it, too. What an
/// interruption leaves there belongs to the Trash.
class TrashStaging {
  public:
    TrashStaging(FileSystem& files, const PathPolicy& policy) : files_(files), policy_(policy) {}

    /// The user's part before root's: makes the folder root moves into, or moves the item out of the Trash.
    /// Returns the move that root makes instead; `move` is one the policy has judged.
    tl::expected<operation::Move, Message> prepare(const operation::Move& move);

    /// The user's part after root's, and after an interruption: moves what is at the staging place of `place`
    /// into the Trash. Nothing to do is success.
    std::optional<Message> settle(const Path& place);

    /// The staging place of a place in a run's numbered folder; nullopt for any other place.
    std::optional<Path> placeFor(const Path& place) const;

  private:
    FileSystem& files_;
    const PathPolicy& policy_;
};

/// Where an item on its way to or from this place in the Trash waits; nullopt for a place outside a Trash.
/// Looks at the text only.
std::optional<Path> stagingPlace(const Path& inTrash);
/// Makes a folder beside the Trash; refused when a link lies on the way, which would lead root elsewhere.
FileResult<void> makeStagingFolder(const Path& folder, FileSystem& files);
/// Removes a staging folder, and those above it, where nothing else waits in them.
void dropEmptyStaging(const Path& folder, FileSystem& files);
/// Something waits there.
bool isStaged(const Path& inTrash, const FileSystem& files);

} // namespace tidwen
