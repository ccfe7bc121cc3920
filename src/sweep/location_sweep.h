#pragma once

#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "platform/budgeted_files.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"
#include "scan/policy/path_policy.h"
#include "scan/policy/search_location.h"
#include "sweep/known_owners.h"
#include "sweep/linked_places.h"
#include "sweep/living_packages.h"
#include "sweep/named_finds.h"
#include "sweep/orphan_candidates.h"
#include "sweep/orphan_scanner.h"
#include "sweep/owner_judge.h"
#include "sweep/sweep_gaps.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The finds of one missing application, while they arrive.
struct Finds {
    std::string humanName;
    std::vector<Trace> traces;
    bool standsAlone = false; ///< not just receipts, which may be those of a tool without any application
};
using FindsByIdentifier = std::map<std::string, Finds>;

/// Sets the disk size of each trace; one that cannot be measured keeps none.
void measureTraces(const FileSystem& files, std::vector<Trace>& traces, const StopToken& stop);

/// Searches the search locations for items that appear to have no owner.
class LocationSweep {
  public:
    /// References must outlive this object.
    LocationSweep(const OrphanScanner::Ports& ports, const BudgetedFiles& files, const UserEnvironment& user,
                  const KnownOwners& owners, const LivingPackages& packages, OwnerJudge& judge,
                  const std::vector<SweepGap>& gaps, const StopToken& stop);

    /// Adds what could not be searched to the result.
    FindsByIdentifier run(OrphanScanResult& result, const OrphanScanner::OnFound& onFound,
                          const OnStep& onStep = {});

    const LinkedPlaces& linked() const { return linked_; }
    /// Items without an identifier that may be taken if they belong to a group.
    std::vector<NamedCandidate> takeNamed() { return std::move(named_); }
    /// The identifiers of other applications in what was found: they live, and what is theirs is no leftover.
    const std::vector<std::string>& identifiersWithin() const { return within_; }

  private:
    /// An apparent identifier counts as one when macOS itself named an item so and it occurs elsewhere, too.
    struct Loose {
        std::vector<OrphanCandidate> candidates;
        std::set<Path> locations;
        bool isNamedByMacOS = false;
    };

    bool isFirstWayTo(const SearchLocation& location);
    std::vector<unsigned char> areFree(const std::vector<OrphanCandidate>& candidates) const;
    void take(std::vector<OrphanCandidate> candidates, const OrphanScanner::OnFound& onFound);
    void contestWhatHoldsOthers(std::vector<Trace>& traces);
    void keepLoose(const SearchLocation& location, LocationCandidates& found);
    void takeLoose(const OrphanScanner::OnFound& onFound);
    void keepNamed(std::vector<NamedCandidate> candidates);

    const OrphanScanner::Ports& ports_;
    const BudgetedFiles& files_;
    const UserEnvironment& user_;
    const PathPolicy policy_;
    const KnownOwners& owners_;
    const LivingPackages& packages_;
    OwnerJudge& judge_;
    const std::vector<SweepGap>& gaps_;
    const StopToken& stop_;
    std::set<Path> searched_; ///< each place once, whatever path leads to it
    LinkedPlaces linked_;
    FindsByIdentifier finds_;
    std::map<std::string, Loose> loose_;
    std::vector<NamedCandidate> named_;
    std::vector<std::string> within_;
};

} // namespace tidwen
