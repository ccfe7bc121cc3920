#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_plan.h"
#include "scan/removability.h"

#include <optional>
#include <vector>

namespace tidwen {

/// Why a removal must not begin.
struct RemovalRefusal {
    Message reason;
    std::vector<Path> unmovableItems = {}; ///< what the rights do not suffice for
};

/// An application goes with its data or not at all: refused is a choice with an application that cannot be
/// taken from where it lies (`whyNotRemovable`), a plan of more steps than a
/// journal holds, and one that the rights do not suffice for (`unmovableItems`). Data alone, and a reset,
/// keep the application by choice. Reads the disk; changes nothing.
std::optional<RemovalRefusal> whyNotBegin(const std::vector<RemovalTarget>& chosen, RemovalMode mode,
                                          const FileSystem& files, const UserEnvironment& user,
                                          MoveRights rights, const Texts& texts);

} // namespace tidwen
