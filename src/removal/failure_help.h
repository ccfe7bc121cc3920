#pragma once

#include "base/message.h"

#include <optional>

namespace tidwen {

/// What the user can do about a step of a removal that failed for this reason; nullopt where the reason says
/// so itself, or where nothing is known to help.
std::optional<Message> helpFor(const Message& reason);

} // namespace tidwen
