#pragma once

#include "base/property_list.h"

namespace tidwen {

/// The two forms that `parsePropertyList` chooses between. Both keep the limits it was given.
tl::expected<PropertyListValue, PropertyListError> parseBinaryPropertyList(std::string_view bytes,
                                                                           const PropertyListLimits& limits);
tl::expected<PropertyListValue, PropertyListError> parseXmlPropertyList(std::string_view bytes,
                                                                        const PropertyListLimits& limits);

} // namespace tidwen
