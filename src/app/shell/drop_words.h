#pragma once

#include "app/shell/open_mac.h"

#include <QString>
#include <string>
#include <vector>

namespace tidwen {

/// Why no application can be looked at now; empty when one can.
QString whyNoLook(OpenMac& mac);
/// What dropping these files of this machine would do, or why nothing. By their names alone.
QString wordsForDrop(OpenMac& mac, const std::vector<std::string>& hostPaths);

} // namespace tidwen
