#pragma once

#include "base/path.h"
#include "base/property_list.h"
#include "platform/file_system.h"

#include <memory>

namespace tidwen {

/// Reads and parses one property list. Null when it cannot be read or parsed, exceeds `limits`, or the budget
/// of the run is exhausted.
std::shared_ptr<const PropertyListValue> readPropertyList(const FileSystem& files, const Path& file,
                                                          const PropertyListLimits& limits = {});

} // namespace tidwen
