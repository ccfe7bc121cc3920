#pragma once

#include "base/log.h"
#include "base/message.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

#include <optional>

namespace tidwen {

/// Why nothing is moved any more: the run's folder was moved or deleted in the middle of the run.
inline constexpr const char* quarantineGoneKey = "failure.quarantineGone";

/// It goes into the folder of a run that is not there any more.
bool hasLostRunFolder(const JudgedMove& move, const FileSystem& files, const PathPolicy& policy);

/// Judges a move by the safety policy, creates the destination's parents, though never the folder of a run,
/// and moves, never overwriting. The move is made along the resolved parents that were judged, so a parent
/// that becomes a link in between makes it fail instead of leading elsewhere. Gives the reason when it did
/// not happen; then nothing moved.
std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log);

} // namespace tidwen
