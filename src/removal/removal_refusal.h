#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_plan.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/scan_result.h"

#include <optional>
#include <vector>

namespace tidwen {

/// Why a removal must not begin.
struct RemovalRefusal {
    Message reason;
    std::vector<Path> unmovableItems = {}; ///< what the rights do not suffice for
};

/// What a refusal is judged by.
struct RefusalGrounds {
    const FileSystem& files;
    const UserEnvironment& user;
    MoveRights rights;
    const ProtectedApps& protectedApps;
    const Texts& texts;
};

/// Nothing goes while the list of protected applications cannot be known: an empty one would spare nothing;
/// nor into a Trash that cannot be used.
/// An application goes with its data or not at all: refused is a choice with an application that cannot be
/// taken from where it lies (`whyNotRemovable`), a plan of more steps than a journal holds, and one that the
/// rights do not suffice for (`unmovableItems`). Data alone, and a reset, keep the application by choice.
/// Reads the disk; changes nothing; may be called from any thread.
std::optional<RemovalRefusal> whyNotBegin(const std::vector<RemovalTarget>& chosen, RemovalMode mode,
                                          const RefusalGrounds& grounds);

/// Why an application of the scan stays although nobody chose that; nothing of it is taken by default then.
std::optional<RemovalRefusal> whyNotByDefault(const std::vector<ScanResult>& results);

} // namespace tidwen
