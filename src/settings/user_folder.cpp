#include "settings/user_folder.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tidwen {

namespace fs = std::filesystem;

fs::path userHome() {
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    if (home && *home == '/') return home;
    const auto* account = ::getpwuid(::geteuid()); // NOLINT(concurrency-mt-unsafe): asked at the start
    return account ? account->pw_dir : "/";
}

std::optional<fs::path> namedFolder(const char* variable) {
    const char* named = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    return named && *named == '/' ? std::optional<fs::path>(named) : std::nullopt;
}

fs::path userFolder(const char* variable, std::string_view fallback) {
    const auto named = namedFolder(variable);
    return named ? *named : userHome() / fallback;
}

} // namespace tidwen
