#pragma once

#include "base/path.h"
#include "scan/applications/installed_app.h"
#include "settings/shared_file.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// What took long to find out about an application, and holds as long as its bundle does not change.
struct KnownApp {
    std::int64_t changed = 0;           ///< the bundle's date then, in nanoseconds since 1970
    std::optional<std::int64_t> bytes;  ///< on the disk
    std::optional<UsageEvidence> usage; ///< shown until it is looked for again
    bool isPartial = false;             ///< there were more bytes than could be measured
    friend bool operator==(const KnownApp&, const KnownApp&) = default;
};
using KnownApps = std::map<Path, KnownApp>;

/// Keeps what is known of applications between starts, so that the next list is complete at once. One file
/// of this machine's user for all Macs that are looked at; whoever writes in it can at most have a wrong size
/// or date shown. Calls block; any thread.
class KnownAppsFile {
  public:
    static constexpr std::size_t maxBytes = 8u << 20;
    static constexpr std::size_t maxApps = 10'000; ///< of one Mac; the rest is found out anew
    static constexpr std::size_t maxMacs = 8;      ///< those that were looked at last

    /// `mac` tells this Mac and its user from others in the same file.
    KnownAppsFile(const std::filesystem::path& file, std::string mac) : file_(file), mac_(std::move(mac)) {}

    /// Nothing of a file that is missing, damaged or larger than its bound.
    KnownApps read() const;
    /// False when it could not be written, or another process holds the file.
    bool store(const KnownApps& apps) const;

  private:
    SharedFile file_;
    std::string mac_;
};

} // namespace tidwen
