#pragma once

#include "base/property_list.h"

#include <optional>
#include <string>

namespace tidwen {

/// The user's settings of this program: the defaults domain on a Mac, one property list elsewhere.
class Defaults {
  public:
    virtual ~Defaults() = default;
    virtual std::optional<PropertyListValue> value(const std::string& key) const = 0;
    /// Stores at once; nothing removes the key. False when it could not be written.
    virtual bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) = 0;
};

} // namespace tidwen
