#include "removal/stay_reason.h"

namespace tidwen {

namespace {

Message claimedBy(const Claimant& other) {
    return {"left.contested %@ %@",
            {other.bundleID.empty() ? other.name : other.bundleID, other.place.string()}};
}

} // namespace

StayReason whyNotSelected(const Trace& trace) {
    if (trace.reversibility == Reversibility::manualOnly) return StayReason::byHand;
    if (trace.contestedBy) return StayReason::contested;
    if (trace.isOnlyListed) return StayReason::onlyListed;
    if (trace.mayHoldOthers) return StayReason::mayHoldOthers;
    if (trace.ownerUnsure) return StayReason::ownerUnsure;
    if (trace.reversibility == Reversibility::irreversibleDestructive) return StayReason::permanent;
    return trace.risk == TraceRisk::sensitive ? StayReason::sensitive : StayReason::notChosen;
}

bool isListedAgain(const StayingTrace& item, RemovalSubject::Kind kind) {
    return kind == RemovalSubject::Kind::installers
           || (kind == RemovalSubject::Kind::leftovers && item.reason == StayReason::notChosen);
}

Message StayingTrace::describe() const {
    switch (reason) {
    case StayReason::notChosen:
        break;
    case StayReason::sensitive:
        return {"left.sensitive"};
    case StayReason::permanent:
        return {"left.permanent"};
    case StayReason::contested:
        if (trace.contestedBy) return claimedBy(*trace.contestedBy);
        break;
    case StayReason::onlyListed:
        return {"left.onlyListed"};
    case StayReason::listGone:
        return {"left.listGone"};
    case StayReason::mayHoldOthers:
        return {"left.mayHoldOthers"};
    case StayReason::ownerUnsure:
        return {"left.ownerUnsure"};
    case StayReason::claimed:
        if (claimant) return claimedBy(*claimant);
        break;
    case StayReason::leftOut:
        return {"left.leftOut"};
    case StayReason::stopped:
        return {"left.stopped"};
    case StayReason::byHand:
        return {"left.byHand"};
    }
    return {"left.notChosen"};
}

} // namespace tidwen
