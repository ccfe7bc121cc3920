#pragma once

#include "base/property_list.h"
#include "platform/file_system.h"

#include <optional>

namespace tidwen {

/// Reads and parses one property list. Nothing when it cannot be read or parsed, or exceeds `limits`.
std::optional<PropertyListValue> readPropertyList(const FileSystem& files, const Path& file,
                                                  const PropertyListLimits& limits = {});

} // namespace tidwen
