#include "sample/sample_tree.h"

#include "sample/sample_contents.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

namespace tidwen::sample {

namespace fs = std::filesystem;

namespace {

std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U; // FNV-1a
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return hash;
}

[[noreturn]] void fail(const char* what, const fs::path& path) {
    throw fs::filesystem_error(what, path, std::error_code(errno, std::generic_category()));
}

/// A time between November 2023 and March 2025, derived from the path.
timespec timeOf(const fs::path& relative) {
    constexpr std::time_t first = 1'700'000'000;
    constexpr std::uint64_t span = 42'000'000;
    timespec time{};
    time.tv_sec = first + static_cast<std::time_t>(hashOf(relative.native()) % span);
    return time;
}

void setTime(const fs::path& path, const timespec& time) {
    const timespec times[2] = {time, time};
    if (utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        fail("cannot set the times", path);
}

} // namespace

std::string expandHome(std::string_view path) {
    if (!path.starts_with('~')) return std::string(path);
    return std::string(home).append(path.substr(1));
}

std::string noise(std::string_view seed, std::size_t bytes) {
    std::string result(bytes, '\0');
    std::uint64_t state = hashOf(seed) | 1;
    for (std::size_t i = 0; i < bytes; ++i) {
        if (i % 8 == 0) { // xorshift
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
        }
        result[i] = static_cast<char>(state >> (i % 8 * 8));
    }
    return result;
}

fs::path SampleTree::host(std::string_view path) const {
    return root_ / fs::path(expandHome(path)).relative_path();
}

void SampleTree::folder(std::string_view path) {
    fs::create_directories(host(path));
}

void SampleTree::file(std::string_view path, std::string_view content, bool isExecutable) {
    const auto place = host(path);
    fs::create_directories(place.parent_path());
    std::ofstream out(place, std::ios::binary);
    out << content;
    out.close();
    if (!out) fail("cannot write", place);
    bytesWritten_ += content.size();
    if (isExecutable) executables_.push_back(place);
}

void SampleTree::link(std::string_view path, std::string_view target) {
    const auto place = host(path);
    fs::create_directories(place.parent_path());
    fs::create_symlink(fs::path(target), place);
}

void SampleTree::setModesAndTimes() {
    std::vector<fs::path> all;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
        all.push_back(entry.path());
        if (entry.is_symlink()) continue;
        fs::permissions(entry.path(), fs::perms(entry.is_directory() ? 0755 : 0644));
    }
    for (const auto& executable : executables_)
        fs::permissions(executable, fs::perms(0755));
    for (const auto* onlyHis :
         {"~/Library", "~/.Trash", "~/Documents", "~/Desktop", "~/Downloads", "~/Pictures"})
        fs::permissions(host(onlyHis), fs::perms(0700));
    for (const auto* everybodys : {"/Users/Shared", "/private/tmp"})
        fs::permissions(host(everybodys), fs::perms(01777));
    for (const auto& path : all)
        setTime(path, timeOf(path.lexically_relative(root_)));
}

} // namespace tidwen::sample
