#pragma once

#include "operations/removal_operation.h"
#include "platform/file_system.h"

#include <vector>

namespace tidwen {

/// What keeps a plan from beginning where there is no administrator to ask, as on a volume: the items that
/// this process may not move, when an application is among them (it would stay without its data) or when
/// there is nothing else to move. Empty when the plan may begin; what cannot be moved then fails alone.
std::vector<Path> obstaclesToBegin(const std::vector<RemovalOperation>& plan, const FileSystem& files);

} // namespace tidwen
