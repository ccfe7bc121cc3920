#pragma once

#include "posix/rooted_file_system.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

/// What the tests of moves between disks look at.
namespace tidwen::test {

namespace fs = std::filesystem;

inline std::unique_ptr<RootedFileSystem> openVolume(const fs::path& root = "/") {
    return RootedFileSystem::open(root).value();
}

inline std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

inline void age(const fs::path& item, long nanoseconds) {
    const timespec times[2] = {{.tv_sec = 5, .tv_nsec = 0},
                               {.tv_sec = 1'500'000'000, .tv_nsec = nanoseconds}};
    ::utimensat(AT_FDCWD, item.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

} // namespace tidwen::test
