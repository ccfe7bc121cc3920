#pragma once

#include "base/message.h"
#include "removal/removal_subject.h"
#include "scan/matching/trace.h"

#include <optional>

namespace tidwen {

/// Why an item that was found stays.
enum class StayReason {
    notChosen,
    sensitive,     ///< not selected by default
    permanent,     ///< cannot be restored; not selected by default
    contested,     ///< another bundle claims it; not selected by default
    onlyListed,    ///< a package's list is the only evidence; not selected by default
    listGone,      ///< the same, and the list was removed: no later scan finds the item
    mayHoldOthers, ///< not completely searched for other applications; not selected by default
    ownerUnsure,   ///< an application that could not be seen may own it; not selected by default
    claimed,       ///< selected, but a remaining application of the same scan also claims it
    leftOut,       ///< selected, but its application was left out at the quit prompt
    stopped,       ///< selected, but the run was stopped before its step
    byHand,        ///< only the user can remove it
};

/// For traces that are not selected.
StayReason whyNotSelected(const Trace& trace);

/// One item that stays after a removal.
struct StayingTrace {
    Trace trace;
    StayReason reason = StayReason::notChosen;
    std::optional<Claimant> claimant = {}; ///< set when the reason is `claimed`

    /// The reason as text, without a full stop.
    Message describe() const;
};

/// Whether the list that the removal was chosen from goes on showing the item in the same way, so that a
/// report only counts it: of leftovers what was not chosen, and every installer.
bool isListedAgain(const StayingTrace& item, RemovalSubject::Kind kind);

} // namespace tidwen
