#include "platform/property_list_file.h"

#include "base/path.h"
#include "platform/budgeted_files.h"

namespace tidwen {

std::shared_ptr<const PropertyListValue> readPropertyList(const FileSystem& files, const Path& file,
                                                          const PropertyListLimits& limits) {
    if (const auto* run = files.budgeted()) return run->propertyList(file, limits);
    const auto bytes = files.read(file, limits.bytes);
    if (!bytes) return nullptr;
    auto value = parsePropertyList(*bytes, limits);
    return value ? std::make_shared<const PropertyListValue>(std::move(*value)) : nullptr;
}

} // namespace tidwen
