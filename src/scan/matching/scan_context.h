#pragma once

#include "base/log.h"
#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/matching/held_places.h"
#include "scan/matching/residue_matcher.h"
#include "scan/policy/path_policy.h"

namespace tidwen {

/// Shared input of all steps of one scan.
struct ScanContext {
    const FileSystem& files;
    const UserEnvironment& user;
    const PathPolicy& policy;
    const ResidueMatcher& matcher;
    HeldPlaces& held;        ///< places of other owners that may lie inside a find
    const Path& targetPlace; ///< the target's bundle with links resolved
    const StopToken& stop;
    Log& log;
};

} // namespace tidwen
