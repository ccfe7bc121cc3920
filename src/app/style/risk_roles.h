#pragma once

#include "app/style/palette.h"
#include "scan/matching/trace.h"

namespace tidwen {

struct RiskRoles {
    Role mark;
    Role ground;
};

/// The colours of a tier. They never stand without its word.
inline RiskRoles roles(TraceRisk risk) {
    switch (risk) {
    case TraceRisk::safe:
        return {Role::safe, Role::safeGround};
    case TraceRisk::review:
        return {Role::look, Role::lookGround};
    case TraceRisk::sensitive:
        break;
    }
    return {Role::sensitive, Role::sensitiveGround};
}

} // namespace tidwen
