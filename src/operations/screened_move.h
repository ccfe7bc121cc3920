#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/matching/found_item.h"
#include "scan/policy/path_policy.h"

#include <optional>

namespace tidwen {

/// Nothing of the item, its folders or its disk forbids the move that was denied.
inline constexpr const char* guardedBySystemKey = "failure.guarded";

/// Why no further move is made: the run's folder was moved or deleted during the run.
inline constexpr const char* quarantineGoneKey = "failure.quarantineGone";

/// The item has arrived, but what was left to remove of the original was put back, or taken elsewhere.
inline constexpr const char* putBackByAnotherKey = "failure.putBackByAnother";

/// The destination is in the folder of a run that no longer exists.
bool hasLostRunFolder(const JudgedMove& move, const FileSystem& files, const PathPolicy& policy);

/// Creates a folder below a run's folder, never that one: if a run's folder, a Trash or a home that
/// disappeared during a run were created again, it would take the remaining items without a record of them.
FileResult<void> makeFolderInQuarantine(const Path& folder, FileSystem& files, const PathPolicy& policy);

/// Something else lies where the item was found.
inline constexpr const char* changedSinceKey = "failure.changedSince";

/// Whether another item has taken the place of the one that was found; false when nothing is there.
bool isAnother(const Path& path, const std::optional<FoundItem>& found, const FileSystem& files);

/// Checks a move against the safety policy, creates the destination's parents, but never the folder of a run,
/// and moves without overwriting. The move uses the resolved parents that were checked, so a parent that
/// becomes a link meanwhile makes it fail instead of redirecting it. Returns the reason on failure; nothing
/// is moved then.
std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log);

} // namespace tidwen
