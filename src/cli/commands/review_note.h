#pragma once

#include "cli/command.h"
#include "platform/defaults.h"

namespace tidwen {

/// Counts a removal whose report was shown and occasionally asks for a review (services/review_reminder).
void remindOfReview(const CommandContext& context, Defaults& defaults, bool withoutFailure);

} // namespace tidwen
