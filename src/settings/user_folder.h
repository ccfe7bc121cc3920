#pragma once

#include <filesystem>
#include <string_view>

namespace tidwen {

/// A folder of this machine's user as the XDG base directories name it: what the environment variable says
/// when it is an absolute path, else `fallback` below the user's home.
std::filesystem::path userFolder(const char* variable, std::string_view fallback);

/// The home of whoever runs this program.
std::filesystem::path userHome();

} // namespace tidwen
