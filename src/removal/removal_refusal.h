#pragma once

#include "base/message.h"
#include "base/path.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "removal/removal_plan.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/scan_result.h"
#include "scan/policy/removability.h"

#include <optional>
#include <vector>

namespace tidwen {

/// Why a removal must not begin.
struct RemovalRefusal {
    Message reason;
    std::vector<Path> unmovableItems = {}; ///< items this process lacks the permissions to move
};

/// What a refusal depends on.
struct RefusalGrounds {
    const FileSystem& files;
    const UserEnvironment& user;
    MoveRights rights;
    Protection protection; ///< as stored now
};

/// Why a removal must not begin. Refused are: any removal while the list of protected applications is
/// unreadable (an empty one would protect nothing), the Trash is unusable or, on the running Mac, Full Disk
/// Access is missing; an application that cannot be removed from its place (`whyNotRemovable`); a plan with
/// more steps than a journal holds; and a plan that lacks permissions (`unmovableItems`), because an
/// application is removed with its data or not at all. Removing data alone, or a reset, keeps the application
/// by choice. Reads the disk, changes nothing; thread-safe.
std::optional<RemovalRefusal> whyNotBegin(const std::vector<RemovalTarget>& chosen, RemovalMode mode,
                                          const RefusalGrounds& grounds);

/// Why an application of the scan stays although it was not deselected; nothing of it is selected by default.
std::optional<RemovalRefusal> whyNotByDefault(const std::vector<ScanResult>& results);

} // namespace tidwen
