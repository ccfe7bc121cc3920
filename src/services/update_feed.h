#pragma once

#include "base/timestamp.h"
#include "services/version_number.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One version that the maker announces.
struct Release {
    std::string version; ///< as written in the feed
    VersionNumber number;
    /// The systems it runs on, each with the least version of it: {"macOS": 14}.
    std::map<std::string, VersionNumber> minimumSystem;
    Timestamp date;
    std::string url;   ///< https, a page to read and download from
    std::string notes; ///< plain text in lines; may be empty

    friend bool operator==(const Release&, const Release&) = default;
};

/// What this program runs on.
struct HostSystem {
    std::string name; ///< "macOS", "Linux"
    VersionNumber version;
};

/// The announced releases of `application` (docs/file-formats.md). Nothing when the text is no feed or
/// another application's. Verify the signature first: what is not the maker's own is not worth reading.
std::optional<std::vector<Release>> parseUpdateFeed(std::string_view text, std::string_view application);

enum class UpdateState {
    upToDate,
    available,
    needsNewerSystem, ///< there are newer versions, but none for this system's version
};

struct UpdateAnswer {
    UpdateState state = UpdateState::upToDate;
    std::optional<Release> release; ///< the newest one that the state speaks of

    friend bool operator==(const UpdateAnswer&, const UpdateAnswer&) = default;
};

/// Never offers the running version or an older one, so that an old feed shown again cannot lead back. A
/// version in a stage is offered only to those who run one.
UpdateAnswer newestRelease(const std::vector<Release>& releases, const VersionNumber& running,
                           const HostSystem& system);

/// "https://host/path" in printable ASCII, without a user, a query or a fragment: nothing in it can carry
/// who asks. At most 2000 characters.
bool isPlainHttpsAddress(std::string_view text);

} // namespace tidwen
