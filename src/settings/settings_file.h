#pragma once

#include "base/message.h"
#include "base/property_list.h"
#include "settings/shared_file.h"

#include <filesystem>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Limits for a settings file in bytes, values and depth; more than any user needs.
inline constexpr PropertyListLimits settingsLimits{.bytes = 4u << 20, .nodes = 200'000, .depth = 32};

/// The settings in a file, empty when it is missing. The error says why they are unknown and what the user
/// can do.
tl::expected<PropertyListDictionary, Message> readSettings(const SharedFile& file);

/// Why the file could not be replaced, judged by what lies there: it, its lock or its folder belongs to
/// another account or is write-protected.
Message whyNotWritable(const std::filesystem::path& file);

/// Bytes from which the same values are read again: XML, which people can read and mend, unless the values
/// hold what XML cannot (control characters, say). Nothing when no form keeps them.
std::optional<std::string> settingsBytes(const PropertyListDictionary& values);

} // namespace tidwen
