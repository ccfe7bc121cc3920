#pragma once

#include <cstdint>
#include <string>

namespace tidwen {

/// "12.3 MB": decimal units, as the Finder counts, with the locale's decimal mark.
std::string formatByteCount(std::int64_t bytes, const std::string& locale = "en");

} // namespace tidwen
