#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"
#include "sweep/named_finds.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// An item in a search location with a reverse-DNS identifier.
struct OrphanCandidate {
    std::string identifier; ///< in lower case
    std::string humanName;  ///< the application's name according to the find itself; may be empty
    std::string folder;     ///< name of the vendor's folder that contains it; usually empty
    std::string alias;      ///< a second identifier in its name; usually empty
    TraceCategory category = TraceCategory::supportFiles;
    TraceAction action;
    bool requiresRoot = false;
};

/// The contents of one location.
struct LocationCandidates {
    std::vector<OrphanCandidate> identified;
    std::vector<OrphanCandidate>
        loose;                  ///< by apparent identifier; confirmed by `isMadeByMacOS` and another find
    bool isMadeByMacOS = false; ///< macOS itself names the items here by identifier
    std::vector<NamedCandidate> named; ///< from places where applications name items after themselves
    std::vector<Path> ownerless;       ///< containers whose records do not name their owner
};

/// "Marlin Notes" of "/Applications/Marlin Notes.app/Contents/MacOS/agent"; empty without an application.
std::string applicationInPath(const std::string& program);

/// Reads one location. nullopt when it exists and cannot be listed. Items whose names are not valid UTF-8 are
/// not judged and go to `skippedNames`. Returns early with partial results when `stop` asks for it.
std::optional<LocationCandidates> listOrphanCandidates(const FileSystem& files,
                                                       const SearchLocation& location,
                                                       std::vector<Path>& skippedNames,
                                                       const StopToken& stop = {});

} // namespace tidwen
