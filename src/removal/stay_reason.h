#pragma once

#include "base/message.h"
#include "scan/matching/trace.h"

#include <optional>

namespace tidwen {

/// Why something that was found stays.
enum class StayReason {
    notChosen,
    sensitive,     ///< and not chosen
    permanent,     ///< could not be put back, and not chosen
    contested,     ///< another bundle claims it, so it goes only when it is chosen
    onlyListed,    ///< nothing but a package's list speaks for it, so it goes only when it is chosen
    mayHoldOthers, ///< not all of it was searched for other applications, so it goes only when it is chosen
    claimed,       ///< it was chosen, and an application of the same scan that stays claims it too
    leftOut,       ///< it was chosen, and its application was left out at the quit prompt
    stopped,       ///< it was to go, and the run was told to stop before
    byHand,        ///< only the user can deal with it
};

/// Of what was not selected.
StayReason whyNotSelected(const Trace& trace);

/// One item that stays after a removal.
struct StayingTrace {
    Trace trace;
    StayReason reason = StayReason::notChosen;
    std::optional<Claimant> claimant = {}; ///< who keeps it when it is `claimed`

    /// The reason in words, without a full stop.
    Message describe() const;
};

} // namespace tidwen
