#include "posix/mounts_within.h"

#ifdef __linux__
#include "posix/item_description.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <fstream>
#include <sstream>
#include <string>
#else
#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/mount.h>
#endif

namespace tidwen {

#ifdef __linux__

namespace {

/// The mount list writes some bytes of a path, including the space, as a backslash and three octal digits.
std::string unescaped(const std::string& text) {
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape =
            text[i] == '\\' && text.find_first_not_of("01234567", i + 1) >= i + 4 && i + 3 < text.size();
        path += isEscape ? static_cast<char>(std::stoi(text.substr(i + 1, 3), nullptr, 8)) : text[i];
        if (isEscape) i += 3;
    }
    return path;
}

/// The fifth field of a line: the mount point.
std::string mountPoint(const std::string& line) {
    std::istringstream fields(line);
    std::string field;
    for (int number = 0; number < 5; ++number)
        fields >> field;
    return unescaped(field);
}

} // namespace

bool holdsMount(int folder, const char* name) {
    const Descriptor item(::openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!item.isOpen()) return false;
    const auto path = readLinkTarget(AT_FDCWD, fmt::format("/proc/self/fd/{}", item.get()).c_str());
    if (!path) return false;
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        const auto place = mountPoint(line);
        if (place == *path || place.starts_with(*path + "/")) return true;
    }
    return false;
}

#else

namespace {

/// One place has two names on a Mac: "/Users" and "/System/Volumes/Data/Users".
std::string_view plain(std::string_view path) {
    constexpr std::string_view dataVolume = "/System/Volumes/Data/";
    if (path.starts_with(dataVolume)) path.remove_prefix(dataVolume.size() - 1);
    return path;
}

} // namespace

bool holdsMount(int folder, const char* name) {
    const Descriptor item(::openat(folder, name, O_EVTONLY | O_SYMLINK | O_CLOEXEC));
    std::array<char, PATH_MAX> path{};
    if (!item.isOpen() || ::fcntl(item.get(), F_GETPATH, path.data()) != 0) return false;
    const std::string place(plain(path.data()));
    struct statfs* mounts = nullptr;
    const int count = ::getmntinfo_r_np(&mounts, MNT_NOWAIT);
    const std::unique_ptr<struct statfs, decltype(&std::free)> owner(mounts, &std::free);
    return std::any_of(mounts, mounts + std::max(count, 0), [&](const struct statfs& mount) {
        const auto at = plain(mount.f_mntonname);
        return at == place || at.starts_with(place + "/");
    });
}

#endif

} // namespace tidwen
