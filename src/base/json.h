#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// The one form of every JSON document Tidwen writes: two-space indentation, sorted keys, " : " between key
/// and value, forward slashes escaped, ASCII control characters escaped, a final line feed. Strings that are
/// not valid UTF-8 are written with replacement characters, so the document is always valid.
std::string writeJson(const nlohmann::json& value);

/// Reads a document of at most `maxBytes` and 64 levels. Nothing when it is malformed, deeper or larger.
/// A document that names one key twice in an object is malformed: two readers could see two files.
std::optional<nlohmann::json> parseJson(std::string_view text, std::size_t maxBytes = 64u << 20);

} // namespace tidwen
