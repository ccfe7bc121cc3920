#pragma once

#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"

#include <QString>

/// How one find is shown.
namespace tidwen {

/// "com.marlinworks.notes": the last part of a path, or the name of what is no file.
QString traceTitle(const Trace& trace);
/// "~/Library/Caches"; empty for what is no file.
QString tracePlace(const Trace& trace, const UserEnvironment& user);
QString traceReason(const Trace& trace, const Texts& texts);
/// The most important thing to know before it is taken; empty when there is none.
QString traceBadge(const Trace& trace, const Texts& texts);
QString traceIcon(const Trace& trace);
/// "~/Library" in place of "/Users/alice/Library".
QString shortPath(const Path& path, const UserEnvironment& user);

} // namespace tidwen
