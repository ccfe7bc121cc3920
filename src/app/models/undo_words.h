#pragma once

#include "base/texts.h"
#include "quarantine/undo_service.h"

#include <QString>
#include <QStringList>

namespace tidwen {

/// What there is to know of an undo besides how much it put back: what it could not, which items have another
/// name now, and the jobs it started. `runsJobs`: not on a volume.
QStringList undoLines(const UndoReport& undo, bool runsJobs, const Texts& texts);

/// Everything is back, under its own name.
inline bool isAsBefore(const UndoReport& undo) {
    return undo.failures.empty() && undo.renamed.empty();
}

} // namespace tidwen
