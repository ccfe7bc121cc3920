#pragma once

#include "base/property_list.h"

#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// The parsers of the two forms, as `parsePropertyList` calls them. Both enforce the given limits.
tl::expected<PropertyListValue, PropertyListError> parseBinaryPropertyList(std::string_view bytes,
                                                                           const PropertyListLimits& limits);
tl::expected<PropertyListValue, PropertyListError> parseXmlPropertyList(std::string_view bytes,
                                                                        const PropertyListLimits& limits);

} // namespace tidwen
