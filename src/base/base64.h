#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// Standard alphabet, padded, without line breaks.
std::string encodeBase64(std::string_view bytes);

/// Ignores white space. Returns nullopt for any other character and for missing padding.
std::optional<std::string> decodeBase64(std::string_view text);

} // namespace tidwen
