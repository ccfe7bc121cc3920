#pragma once

#include "platform/applications.h"
#include "sweep/known_owners.h"
#include "sweep/orphan_scanner.h"

#include <map>
#include <set>
#include <string>

namespace tidwen {

struct OrphanCandidate;

/// Decides which candidates have no owner, and caches the answer per identifier.
class OwnerJudge {
  public:
    /// `protectedIDs` in any letter case. References must outlive this object.
    OwnerJudge(const KnownOwners& owners, const RunningApplications& running,
               const OrphanScanner::IsRegistered& isRegistered, const std::set<std::string>& protectedIDs);

    bool isOrphan(const OrphanCandidate& candidate);
    /// The same for a lower-case identifier alone.
    bool isNobodys(const std::string& identifier);

  private:
    bool judge(const std::string& identifier) const;

    const KnownOwners& owners_;
    const RunningApplications& running_;
    const OrphanScanner::IsRegistered& isRegistered_;
    std::set<std::string> protected_;
    std::map<std::string, bool> answers_;
};

} // namespace tidwen
