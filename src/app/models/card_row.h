#pragma once

#include "app/style/palette.h"

#include <Qt>

namespace tidwen {

/// What the views of lists in cards ask a model for, whichever it is.
struct CardRow {
    enum class Kind { section, row };
    /// What stands at the far side of a row.
    enum class Control { none, on, off, busy, button };
    enum Role {
        kind = Qt::UserRole,
        second, ///< of a section: a sentence about it
        size,
        badges,    ///< a list of words
        icon,      ///< one of our own, while there is no application
        isCaution, ///< the icon warns
        appName,   ///< the application whose picture stands here
        bundleID,  ///< of it
        bundle,    ///< where it lies, when that is known
        control,
        controlWords, ///< of a button
    };
};

} // namespace tidwen
