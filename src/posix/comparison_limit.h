#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>

namespace tidwen {

/// While it lives, the comparisons of copies in its thread share one limit: they read at most 4 GiB of holes,
/// which cost a hostile disk nothing, end when a stop is requested, and read a pair of files only once.
/// Within another one it changes nothing.
class ComparisonLimit {
  public:
    explicit ComparisonLimit(StopToken stop);
    ~ComparisonLimit();
    ComparisonLimit(const ComparisonLimit&) = delete;
    ComparisonLimit& operator=(const ComparisonLimit&) = delete;

    static bool isStopped();
    /// Whether so many bytes that cost the disk nothing may be read, too. Without a limit, always.
    static bool allowsFree(std::uint64_t bytes);
    static bool allowsHolesOf(const FileInfo& file);
    /// What comparing this pair of files showed, as long as both are as they were.
    static std::optional<bool> known(const FileInfo& a, const FileInfo& b);
    static void add(const FileInfo& a, const FileInfo& b, bool isAlike);

  private:
    /// Device, inode, size and time of the last change, of each of the two.
    using Pair = std::array<std::uint64_t, 8>;
    static Pair pairOf(const FileInfo& a, const FileInfo& b);

    StopToken stop_;
    std::uint64_t holesLeft_;
    std::map<Pair, bool> compared_;
};

} // namespace tidwen
