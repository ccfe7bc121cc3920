#pragma once

#include "base/path.h"
#include "base/timestamp.h"

#include <optional>

namespace tidwen {

/// What the system recorded about the use of an item; each part may be missing.
struct UsageRecord {
    std::optional<Timestamp> lastUsed;
    std::optional<int> useCount; ///< not negative
    friend bool operator==(const UsageRecord&, const UsageRecord&) = default;
};

/// The running system's own records of use, apart from what the items themselves carry.
class UsageRecords {
  public:
    virtual ~UsageRecords() = default;
    /// Empty for an item that the system does not know. Thread-safe; blocks.
    virtual UsageRecord of(const Path& item) const = 0;
};

} // namespace tidwen
