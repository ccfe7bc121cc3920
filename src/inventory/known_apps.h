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

/// What is expensive to determine about an application and stays valid while its bundle does not change.
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
    static constexpr std::size_t maxApps = 10'000; ///< of one Mac; others are determined again
    static constexpr std::size_t maxMacs = 8;      ///< the most recently used ones

    /// `mac` identifies this Mac and its user in the file.
    KnownAppsFile(const std::filesystem::path& file, std::string mac) : file_(file), mac_(std::move(mac)) {}

    /// Empty when the file is missing, damaged or too large.
    KnownApps read() const;
    /// False when it could not be written, or another process has it locked.
    bool store(const KnownApps& apps) const;

  private:
    SharedFile file_;
    std::string mac_;
};

} // namespace tidwen
