#pragma once

#include <string>
#include <vector>

class QMimeData;

namespace tidwen {

/// The files of this machine that were dropped.
std::vector<std::string> droppedPaths(const QMimeData& data);
/// By its name alone; a drag must not wait for a disk.
bool looksLikeApplication(const std::string& path);

} // namespace tidwen
