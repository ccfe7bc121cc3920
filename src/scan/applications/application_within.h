#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"

#include <cstddef>
#include <functional>

namespace tidwen {

/// Whether all of a folder was searched, as far as six folders deep.
enum class Searched { whole, partly };

/// Passes the applications in a folder to `visit`, nearest first, until it returns true; a move of the folder
/// takes them along. Does not search in bundles, nor in an item that is one itself or no folder. Lists at
/// most `foldersLeft` folders, and at most 10,000, and counts them off.
Searched visitApplicationsWithin(const FileSystem& files, const Path& item, std::size_t& foldersLeft,
                                 const std::function<bool(const Path& application)>& visit,
                                 const StopToken& stop);

} // namespace tidwen
