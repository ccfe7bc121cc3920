#pragma once

#include "base/path.h"
#include "platform/usage_records.h"

namespace tidwen {

/// What Spotlight's index knows; nothing on a disk that it does not index.
class SpotlightUsage : public UsageRecords {
  public:
    UsageRecord of(const Path& item) const override;
};

} // namespace tidwen
