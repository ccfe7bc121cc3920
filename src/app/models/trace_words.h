#pragma once

#include "base/path.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"

#include <QString>
#include <QVariant>

#include <cstdint>

/// How one find is shown.
namespace tidwen {

/// "com.marlinworks.notes": the last part of a path, or the name of what is no file.
QString traceTitle(const Trace& trace, const Texts& texts);
/// "~/Library/Caches"; empty for what is no file.
QString tracePlace(const Trace& trace, const UserEnvironment& user);
QString traceReason(const Trace& trace, const Texts& texts);
/// The most important thing to know before it is taken; empty when there is none.
QString traceBadge(const Trace& trace, const Texts& texts);
QString traceIcon(const Trace& trace);
/// What a row of a tree of finds shows of it, but for the second line. `largest`: bytes at which bars are
/// full.
QVariant traceData(const Trace& trace, int role, std::int64_t largest, const Texts& texts);
/// The whole row for a screen reader: "com.marlinworks.notes, Safe, 2.1 MB, selected, its name holds …".
struct SpokenState {
    QString badge = {};
    bool isSelected = false;
};
QString spokenTrace(const Trace& trace, const SpokenState& state, const Texts& texts);
/// "~/Library" in place of "/Users/alice/Library".
QString shortPath(const Path& path, const UserEnvironment& user);

/// How far a removal or an undo is.
QString stepWords(const StepProgress& step, const Texts& texts, const UserEnvironment& user);

} // namespace tidwen
