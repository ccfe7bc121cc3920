#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace tidwen {

/// The value of an environment variable if it is an absolute path, as the XDG base directories require.
std::optional<std::filesystem::path> namedFolder(const char* variable);

/// A folder of this machine's user: that of the variable, else `fallback` below the user's home.
std::filesystem::path userFolder(const char* variable, std::string_view fallback);

/// The home of the user running this program.
std::filesystem::path userHome();

} // namespace tidwen
