#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"

#include <cstdint>
#include <set>
#include <utility>

namespace tidwen {

/// While it lives, the comparisons of copies in its thread share one limit: they read at most 4 GiB of holes,
/// which cost a hostile disk nothing, end when a stop is requested, and read a pair that differs only once.
class ComparisonLimit {
  public:
    explicit ComparisonLimit(StopToken stop);
    ~ComparisonLimit();
    ComparisonLimit(const ComparisonLimit&) = delete;
    ComparisonLimit& operator=(const ComparisonLimit&) = delete;

    static bool isStopped();
    /// Whether the holes of a file may be read, too. Without a limit, always.
    static bool allowsHolesOf(const FileInfo& file);
    static bool isKnownToDiffer(const FileInfo& a, const FileInfo& b);
    static void addDifference(const FileInfo& a, const FileInfo& b);

  private:
    using Item = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode
    static std::pair<Item, Item> pairOf(const FileInfo& a, const FileInfo& b);

    StopToken stop_;
    std::uint64_t holesLeft_;
    std::set<std::pair<Item, Item>> different_;
    ComparisonLimit* before_;
};

} // namespace tidwen
