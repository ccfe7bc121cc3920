#pragma once

#include "base/log.h"
#include "base/message.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

#include <optional>

namespace tidwen {

/// Judges a move by the safety policy, creates the destination's parents and moves, never overwriting. The
/// move is made along the resolved parents that were judged, so a parent that becomes a link in between makes
/// it fail instead of leading elsewhere. Gives the reason when it did not happen; then nothing moved.
std::optional<Message> screenedMove(const operation::Move& move, FileSystem& files, const PathPolicy& policy,
                                    Log& log);

} // namespace tidwen
