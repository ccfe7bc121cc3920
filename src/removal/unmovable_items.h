#pragma once

#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "scan/policy/removability.h"

#include <vector>

namespace tidwen {

/// The items that prevent a plan from beginning: neither this process nor, with `MoveRights::administrator`,
/// the administrator batch can move them, and either an application is among them (it would stay without its
/// data) or nothing else can be moved. Empty when the plan may begin; immovable items then fail individually.
std::vector<Path> unmovableItems(const std::vector<RemovalOperation>& plan, const FileSystem& files,
                                 MoveRights rights);

} // namespace tidwen
