#pragma once

#include "base/message.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "removal/removal_plan.h"
#include "removal/removal_subject.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/scan_result.h"
#include "scan/policy/removability.h"
#include "sweep/reclaimed_finds.h"

#include <functional>
#include <map>
#include <vector>

namespace tidwen {

/// The leftovers that have an owner now.
using FindReclaimed = std::function<Reclaimed(const std::vector<EarlierFinds>&)>;
/// Why items of an offer, by their paths, have to stay by now; those that may still go are absent. Reads the
/// disk; called on any thread.
using FindInUse = std::function<std::map<Path, Message>()>;

/// What the renewed check looks at.
struct RenewedGrounds {
    const FileSystem& files;
    const UserEnvironment& user;
    MoveRights rights;
    Protection protection; ///< as stored now
    const AppTargetLoader& loader;
    const FindReclaimed& findReclaimed;
    /// What a scan finds of an application at this moment.
    std::function<ScanResult(const AppTarget&)> scan;
    const FindInUse& findInUse; ///< of an offer; empty for anything else
};

/// Compares what the user confirmed with the disk of this moment: minutes, for a window left open hours, lie
/// between. Refused (`RemovalTarget::refusals`) are an application that is another one by now, is protected
/// or cannot be removed any more, with everything that was found of it; leftovers that an installed or
/// running application claims; what a scan would no longer find of an application, or only as another's too;
/// and each item that is no longer the one that was found. What was found by name stays attributed if only
/// its content has changed. Reads the disk; any thread.
void refuseWhatChanged(std::vector<RemovalTarget>& targets, RemovalMode mode, RemovalSubject::Kind kind,
                       const RenewedGrounds& grounds);

} // namespace tidwen
