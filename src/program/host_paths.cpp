#include "program/host_paths.h"

#include <algorithm>
#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

HostPaths::HostPaths(const std::optional<fs::path>& volume) {
    std::error_code failed;
    fs::path root = fs::canonical(volume.value_or("/"), failed);
    if (!failed) root_ = std::move(root);
}

std::optional<Path> HostPaths::macPath(const std::string& hostPath) const {
    if (!root_ || hostPath.empty()) return std::nullopt;
    std::error_code failed;
    fs::path given = fs::absolute(hostPath, failed);
    if (failed) return std::nullopt;
    if (given.filename().empty()) given = given.parent_path();          // a trailing slash from completion
    if (given.filename() == "..") given = fs::canonical(given, failed); // which names no item of its own
    if (failed || !fs::exists(fs::symlink_status(given, failed))) return std::nullopt;

    const fs::path parent = fs::canonical(given.parent_path(), failed);
    if (failed) return std::nullopt;
    const auto item = parent / given.filename();
    const auto [rootEnd, rest] = std::mismatch(root_->begin(), root_->end(), item.begin(), item.end());
    if (rootEnd != root_->end() || rest == item.end()) return std::nullopt;
    fs::path below = "/";
    for (auto piece = rest; piece != item.end(); ++piece)
        below /= *piece;
    return Path(below.string());
}

} // namespace tidwen
