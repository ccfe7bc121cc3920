#pragma once

#include "base/log.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/matching/held_places.h"
#include "scan/matching/residue_matcher.h"
#include "scan/policy/path_policy.h"

namespace tidwen {

/// What every step of one scan works with.
struct ScanContext {
    const FileSystem& files;
    const UserEnvironment& user;
    const PathPolicy& policy;
    const ResidueMatcher& matcher;
    HeldPlaces& held;        ///< what others keep that may lie in a find
    const Path& targetPlace; ///< where the target's bundle really lies
    const StopToken& stop;
    Log& log;
};

} // namespace tidwen
