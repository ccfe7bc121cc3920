#pragma once

#include <string_view>

namespace tidwen {

// Places of all users: moving one of these takes along far more than any application.
inline constexpr std::string_view deniedPaths[] = {
    "/",
    "/Applications",
    "/Applications/Utilities",
    "/Library",
    "/Users",
    "/Users/Shared",
    "/private",
    "/opt",
    "/usr/local",
    "/usr/local/bin",
    "/usr/local/sbin",
    "/usr/local/lib",
    "/usr/local/share",
    "/usr/local/etc",
    "/usr/local/var",
    "/usr/local/opt",
    "/usr/local/include",
    "/opt/homebrew",
    "/opt/local",
    "/opt/homebrew/bin",
    "/opt/homebrew/lib",
    "/opt/homebrew/Cellar",
    "/opt/homebrew/Caskroom",
    "/opt/homebrew/opt",
    "/opt/homebrew/etc",
    "/opt/homebrew/var",
    "/opt/homebrew/share",
};

// Folders of a home that must stay, though items in some of them may be moved.
inline constexpr std::string_view deniedHomeFolders[] = {"Library", "Documents", "Desktop",  "Downloads",
                                                         "Movies",  "Music",     "Pictures", "Applications"};

// Folders of a home of which nothing may be moved.
inline constexpr std::string_view neverTouchInHome[] = {
    "Library/Keychains",
    "Library/Mobile Documents",
    "Documents",
    "Desktop",
    "Downloads",
    "Pictures",
    "Movies",
    "Music",
    ".Trash",
};

} // namespace tidwen
