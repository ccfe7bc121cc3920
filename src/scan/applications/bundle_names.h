#pragma once

#include <string_view>

namespace tidwen {

/// The name has the extension of a folder that people take for one thing (".app", ".plugin", ".kext" …).
bool isBundleName(std::string_view name);

} // namespace tidwen
