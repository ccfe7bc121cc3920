#pragma once

#include "removal/findings.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace tidwen {

/// What the applications of one scan claim of each other's items. When scanned together they do not contest
/// each other, because all are to be removed; their claims count once one of them stays. Computed on demand
/// and cached. Not thread-safe.
class StayingClaims {
  public:
    explicit StayingClaims(std::shared_ptr<const Findings> findings) : findings_(std::move(findings)) {}

    /// The numbers of other applications' traces to which this one has an equally strong claim.
    const std::vector<std::size_t>& of(std::size_t application);

  private:
    std::shared_ptr<const Findings> findings_;
    std::map<std::size_t, std::vector<std::size_t>> byApplication_;
};

} // namespace tidwen
