#pragma once

#include "base/stop_token.h"
#include "platform/file_system.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "sweep/named_finds.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Something in a search location that carries a reverse-DNS identifier.
struct OrphanCandidate {
    std::string identifier; ///< in lower case
    std::string humanName;  ///< what the find itself calls its application; may be empty
    std::string folder;     ///< name of the vendor's folder that it lies in; mostly empty
    std::string alias;      ///< another identifier that it is called by; mostly empty
    TraceCategory category = TraceCategory::supportFiles;
    TraceAction action;
    bool requiresRoot = false;
};

/// What one location holds.
struct LocationCandidates {
    std::vector<OrphanCandidate> identified;
    std::vector<OrphanCandidate>
        loose;                  ///< by what may be an identifier; told by `isMadeByMacOS` and another find
    bool isMadeByMacOS = false; ///< macOS itself names what lies here after identifiers
    std::vector<NamedCandidate> named; ///< where applications put what they call by their names
    std::vector<Path> ownerless;       ///< containers whose records do not say whose they are
};

/// Reads one location. Nothing when it is there and cannot be listed. What has a name that is not valid UTF-8
/// is not judged and goes to `skippedNames`. Ends early, with what it has, when `stop` asks for it.
std::optional<LocationCandidates> listOrphanCandidates(const FileSystem& files,
                                                       const SearchLocation& location,
                                                       std::vector<Path>& skippedNames,
                                                       const StopToken& stop = {});

} // namespace tidwen
