#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen::sample {

/// Writes files below one folder with fixed modes and times, so that two samples are identical byte by byte
/// whatever the machine's clock and umask. Throws std::filesystem::filesystem_error.
class SampleTree {
  public:
    explicit SampleTree(std::filesystem::path root) : root_(std::move(root)) {}

    /// Mac paths; "~" is the sample user's home. Missing parents are created.
    void folder(std::string_view path);
    void file(std::string_view path, std::string_view content, bool isExecutable = false);
    void link(std::string_view path, std::string_view target);

    /// Call it once, at the end: a later file would change the times of its folder again.
    void setModesAndTimes();

    std::uint64_t bytesWritten() const { return bytesWritten_; }

  private:
    std::filesystem::path host(std::string_view path) const;

    std::filesystem::path root_;
    std::vector<std::filesystem::path> executables_;
    std::uint64_t bytesWritten_ = 0;
};

/// "~/Library" → "/Users/alice/Library".
std::string expandHome(std::string_view path);

/// Incompressible bytes, the same for the same seed.
std::string noise(std::string_view seed, std::size_t bytes);

} // namespace tidwen::sample
