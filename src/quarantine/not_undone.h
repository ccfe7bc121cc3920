#pragma once

#include "base/message.h"
#include "quarantine/manifest.h"

#include <optional>

namespace tidwen {

/// What a run did that no undo brings back.
enum class NotUndone {
    nothing,
    permissions, ///< privacy permissions were reset
    passwords,   ///< passwords were deleted, and permissions may have been reset
    unknown,     ///< a manifest of an earlier version, or a recovered one, does not say
};

NotUndone notUndone(const Manifest& manifest);
/// A sentence; absent for nothing.
std::optional<Message> describe(NotUndone lost);

} // namespace tidwen
