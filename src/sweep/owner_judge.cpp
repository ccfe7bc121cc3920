#include "sweep/owner_judge.h"

#include "base/text.h"
#include "sweep/known_owners.h"
#include "sweep/orphan_candidates.h"

namespace tidwen {

OwnerJudge::OwnerJudge(const KnownOwners& owners, const RunningApplications& running,
                       const OrphanScanner::IsRegistered& isRegistered,
                       const std::set<std::string>& protectedIDs)
    : owners_(owners), running_(running), isRegistered_(isRegistered) {
    for (const auto& identifier : protectedIDs)
        protected_.insert(lowercased(identifier));
}

bool OwnerJudge::isOrphan(const OrphanCandidate& candidate) {
    if (!candidate.folder.empty() && owners_.ownsFolder(candidate.folder)) return false;
    return isNobodys(candidate.identifier) && (candidate.alias.empty() || isNobodys(candidate.alias));
}

bool OwnerJudge::isNobodys(const std::string& identifier) {
    const auto known = answers_.find(identifier);
    if (known != answers_.end()) return known->second;
    return answers_[identifier] = judge(identifier);
}

bool OwnerJudge::judge(const std::string& identifier) const {
    if (owners_.claims(identifier)) return false;
    // A helper's identifier continues its application's, so every shorter form is checked too.
    for (std::string form = identifier;; form.resize(form.rfind('.'))) {
        if (protected_.contains(form) || running_.isRunning(form) || isRegistered_(form)) return false;
        if (!isReverseDns(form)) return true;
    }
}

} // namespace tidwen
