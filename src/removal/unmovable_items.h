#pragma once

#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/policy/removability.h"

#include <vector>

namespace tidwen {

/// What keeps a plan from beginning: the items that can be moved neither by this process nor, with
/// `MoveRights::administrator`, by the batch that takes the plan's root-level steps; when an application is
/// among them (it would stay without its data) or when there is nothing else to move. Empty when the plan may
/// begin; what cannot be moved then fails alone.
std::vector<Path> unmovableItems(const std::vector<RemovalOperation>& plan, const FileSystem& files,
                                 MoveRights rights);

} // namespace tidwen
