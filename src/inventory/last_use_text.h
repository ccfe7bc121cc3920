#pragma once

#include "base/message.h"
#include "base/timestamp.h"
#include "scan/applications/installed_app.h"

#include <optional>

namespace tidwen {

/// How long ago an application was used, in whole units of the largest that fits ("3 days ago"); nothing
/// while nothing tells. A last use in the future counts as today.
std::optional<Message> describeLastUse(const InstalledApp& app, Timestamp now);

} // namespace tidwen
