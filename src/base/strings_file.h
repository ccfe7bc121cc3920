#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// Parses a ".strings" file: the text form ("key" = "value"; with comments, UTF-8 or UTF-16) or a property
/// list. Returns nullopt when the file is malformed: as on a Mac, one missing semicolon invalidates all of
/// it.
std::optional<std::map<std::string, std::string>> parseStringsFile(std::string_view bytes);

} // namespace tidwen
