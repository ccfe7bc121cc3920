#include "platform/property_list_file.h"

namespace tidwen {

std::optional<PropertyListValue> readPropertyList(const FileSystem& files, const Path& file,
                                                  const PropertyListLimits& limits) {
    const auto bytes = files.read(file, limits.bytes);
    if (!bytes) return std::nullopt;
    auto value = parsePropertyList(*bytes, limits);
    if (!value) return std::nullopt;
    return std::move(*value);
}

} // namespace tidwen
