#include "support/trees.h"

#include "posix/item_description.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace tidwen::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* attribute = "user.com.example.tag";

#ifdef __APPLE__ // two more arguments: an offset, only for resource forks, and options
ssize_t attributeOf(const fs::path& item, char* value, std::size_t size) {
    return ::getxattr(item.c_str(), attribute, value, size, 0, 0);
}
int setAttribute(const fs::path& item, std::string_view value) {
    return ::setxattr(item.c_str(), attribute, value.data(), value.size(), 0, 0);
}
#else
ssize_t attributeOf(const fs::path& item, char* value, std::size_t size) {
    return ::getxattr(item.c_str(), attribute, value, size);
}
int setAttribute(const fs::path& item, std::string_view value) {
    return ::setxattr(item.c_str(), attribute, value.data(), value.size(), 0);
}
#endif

std::string describe(const fs::path& item, const std::string& shown, FolderTimes times) {
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) return shown + " missing";
    const bool isFolder = S_ISDIR(status.st_mode);
    const auto modified = isFolder && times == FolderTimes::ignored ? timespec{} : modificationTime(status);
    std::string line =
        fmt::format("{} {:o} {} {} {}.{} {} ", shown, status.st_mode, status.st_uid, status.st_gid,
                    modified.tv_sec, modified.tv_nsec, isFolder ? 0 : status.st_nlink);
    if (S_ISLNK(status.st_mode)) return line + fs::read_symlink(item).string();
    if (S_ISREG(status.st_mode))
        line += fmt::format("{} {}", status.st_size, std::hash<std::string>()(contentOf(item)));
    std::array<char, 64> value{};
    const auto length = attributeOf(item, value.data(), value.size());
    return length < 0 ? line : line + " tag " + std::string(value.data(), static_cast<std::size_t>(length));
}

} // namespace

std::vector<std::string> fingerprint(const fs::path& top, FolderTimes times) {
    std::vector<std::string> lines{describe(top, "", times)};
    if (fs::is_directory(fs::symlink_status(top)))
        for (const auto& entry : fs::recursive_directory_iterator(top))
            lines.push_back(describe(entry.path(), entry.path().lexically_relative(top).string(), times));
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool tag(const fs::path& item) {
    return setAttribute(item, "blue") == 0;
}

void writeFile(const fs::path& file, std::string_view content) {
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    if (!out.write(content.data(), static_cast<std::streamsize>(content.size())).flush())
        throw std::runtime_error("cannot write " + file.string());
}

std::string contentOf(const fs::path& file) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

} // namespace tidwen::test
