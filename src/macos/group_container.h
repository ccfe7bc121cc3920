#pragma once

#include "base/path.h"

#include <optional>
#include <string>

namespace tidwen {

/// The folder that the processes of an application group share, as the system names it; nullopt when it names
/// none. For an extension it exists afterwards. Any thread.
std::optional<Path> groupContainer(const std::string& group);

} // namespace tidwen
