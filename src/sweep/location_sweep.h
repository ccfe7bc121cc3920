#pragma once

#include "platform/budgeted_files.h"
#include "scan/policy/path_policy.h"
#include "sweep/linked_places.h"
#include "sweep/named_finds.h"
#include "sweep/orphan_candidates.h"
#include "sweep/orphan_scanner.h"
#include "sweep/owner_judge.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// One application that is gone, while its finds come in.
struct Finds {
    std::string humanName;
    std::vector<Trace> traces;
    bool standsAlone = false; ///< not just receipts that may be those of a tool without any application
};
using FindsByIdentifier = std::map<std::string, Finds>;

/// Fills in how much of the disk each of the traces takes; one that cannot be measured stays without.
void measureTraces(const FileSystem& files, std::vector<Trace>& traces, const StopToken& stop);

/// Looks through the search locations for what seems to be nobody's.
class LocationSweep {
  public:
    /// `lostPackages`: identifiers of packages of which nothing is there any more. What is passed by
    /// reference outlives it.
    LocationSweep(const OrphanScanner::Ports& ports, const BudgetedFiles& files, const UserEnvironment& user,
                  const KnownOwners& owners, const std::set<std::string>& lostPackages, OwnerJudge& judge,
                  const std::vector<SweepGap>& gaps, const StopToken& stop);

    /// What could not be looked at goes to the result.
    FindsByIdentifier run(OrphanScanResult& result, const OrphanScanner::OnFound& onFound,
                          const OnStep& onStep = {});

    const LinkedPlaces& linked() const { return linked_; }
    /// What has no identifier and may be taken all the same, if it is some group's.
    std::vector<NamedCandidate> takeNamed() { return std::move(named_); }

  private:
    /// What looks like an identifier is one when macOS itself named something so and it stands elsewhere,
    /// too.
    struct Loose {
        std::vector<OrphanCandidate> candidates;
        std::set<Path> locations;
        bool isNamedByMacOS = false;
    };

    bool isFirstWayTo(const SearchLocation& location);
    bool isClaimable(const OrphanCandidate& candidate) const;
    void take(std::vector<OrphanCandidate> candidates, const OrphanScanner::OnFound& onFound);
    void keepLoose(const SearchLocation& location, LocationCandidates& found);
    void takeLoose(const OrphanScanner::OnFound& onFound);
    void keepNamed(std::vector<NamedCandidate> candidates);

    const OrphanScanner::Ports& ports_;
    const BudgetedFiles& files_;
    const UserEnvironment& user_;
    const PathPolicy policy_;
    const KnownOwners& owners_;
    const std::set<std::string>& lostPackages_;
    OwnerJudge& judge_;
    const std::vector<SweepGap>& gaps_;
    const StopToken& stop_;
    std::set<Path> searched_; ///< each place once, whatever leads to it
    LinkedPlaces linked_;
    FindsByIdentifier finds_;
    std::map<std::string, Loose> loose_;
    std::vector<NamedCandidate> named_;
};

} // namespace tidwen
