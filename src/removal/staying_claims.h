#pragma once

#include "removal/findings.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace tidwen {

/// What the applications of one scan claim of one another's items. They contest nothing with one another when
/// they are scanned, as all of them are to go; it matters once one of them stays. Worked out when it is
/// asked for, and kept. Used by one thread at a time.
class StayingClaims {
  public:
    explicit StayingClaims(std::shared_ptr<const Findings> findings) : findings_(std::move(findings)) {}

    /// The numbers of the other applications' traces that this one has as good a claim to as they have.
    const std::vector<std::size_t>& of(std::size_t application);

  private:
    std::shared_ptr<const Findings> findings_;
    std::map<std::size_t, std::vector<std::size_t>> byApplication_;
};

} // namespace tidwen
