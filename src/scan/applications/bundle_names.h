#pragma once

#include <string_view>

namespace tidwen {

/// Whether the name has the extension of a folder that is presented as one item (".app", ".plugin", ".kext"
/// …).
bool isBundleName(std::string_view name);

} // namespace tidwen
