#include "quarantine/restore_target.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "base/uuid.h"

#include <algorithm>

namespace tidwen {

Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken) {
    int first = 1;
    return restoreTarget(source, files, taken, first);
}

Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken, int& first) {
    const auto isFree = [&](const Path& path) { return !taken.contains(path) && !files.exists(path); };
    for (first = std::max(first, 1); first <= lastNumberTried; ++first)
        if (auto candidate = numberedName(source, first); isFree(candidate)) return candidate;
    const auto tail = " " + Uuid::random().string();
    return source.parent() / (shortened(source.stem(), longestFileName - tail.size()) + tail);
}

} // namespace tidwen
