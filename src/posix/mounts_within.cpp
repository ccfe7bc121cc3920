#include "posix/mounts_within.h"

#ifdef __linux__
#include "posix/item_description.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <fstream>
#include <sstream>
#include <string>
#else
#include "posix/tree_walk.h"

#include <cerrno>
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

bool holdsMount(int folder, const char* name) {
    static constexpr int mostItems = 200'000;
    class Search : public TreeVisitor {
      public:
        int item(const TreeItem&) override { return ++seen_ < mostItems ? 0 : ECANCELED; }
        int skipped(int fault) override { return fault == EXDEV ? fault : 0; }
        int enter(const TreeItem& folder, int) override { return item(folder); }

      private:
        int seen_ = 0;
    } search;
    return walkTree(folder, name, search) == EXDEV;
}

#endif

} // namespace tidwen
