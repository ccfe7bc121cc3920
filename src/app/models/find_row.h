#pragma once

#include "app/style/palette.h"

#include <Qt>

namespace tidwen {

/// What the views of finds ask a model for, whichever it is.
struct FindRow {
    enum class Kind { application, tier, group, item, byHand };
    enum Role { kind = Qt::UserRole, second, size, badge, badgeRisk, share, risk, icon };
};

} // namespace tidwen
