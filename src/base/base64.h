#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// The usual alphabet with padding, in one line.
std::string encodeBase64(std::string_view bytes);

/// White space between the characters is passed over. Nothing for any other character, and when the padding
/// is missing.
std::optional<std::string> decodeBase64(std::string_view text);

} // namespace tidwen
