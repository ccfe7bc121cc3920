#pragma once

#include "base/timestamp.h"
#include "services/version_number.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One released version.
struct Release {
    std::string version; ///< as written in the feed
    VersionNumber number;
    /// Supported systems, each with its minimum version: {"macOS": 14}.
    std::map<std::string, VersionNumber> minimumSystem;
    Timestamp date;
    std::string url;   ///< https URL of a page to read and download from
    std::string notes; ///< plain text, may have several lines or be empty

    friend bool operator==(const Release&, const Release&) = default;
};

/// The system this program runs on.
struct HostSystem {
    std::string name; ///< "macOS", "Linux"
    VersionNumber version;
};

/// The releases of `application` in a feed (docs/file-formats.md). nullopt when the text is not a feed or
/// belongs to another application. Verify the signature first; unverified text must not be parsed.
std::optional<std::vector<Release>> parseUpdateFeed(std::string_view text, std::string_view application);

enum class UpdateState {
    upToDate,
    available,
    needsNewerSystem, ///< there are newer versions, but none for this version of the system
};

struct UpdateAnswer {
    UpdateState state = UpdateState::upToDate;
    std::optional<Release> release; ///< the newest release that the state refers to

    friend bool operator==(const UpdateAnswer&, const UpdateAnswer&) = default;
};

/// Never offers the running version or an older one, so replaying an old feed cannot cause a downgrade.
/// Pre-release versions are offered only to users of one.
UpdateAnswer newestRelease(const std::vector<Release>& releases, const VersionNumber& running,
                           const HostSystem& system);

/// "https://host/path" in printable ASCII, without user, query or fragment, so it cannot carry anything that
/// identifies the user. At most 2000 characters.
bool isPlainHttpsAddress(std::string_view text);

} // namespace tidwen
