#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace tidwen {

/// What an environment variable says when it is an absolute path, as the XDG base directories ask.
std::optional<std::filesystem::path> namedFolder(const char* variable);

/// A folder of this machine's user: the named one, else `fallback` below the user's home.
std::filesystem::path userFolder(const char* variable, std::string_view fallback);

/// The home of whoever runs this program.
std::filesystem::path userHome();

} // namespace tidwen
