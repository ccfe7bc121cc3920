#include "sweep/orphan_scanner.h"

#include "base/parallel.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/residue_scanner.h"
#include "scan/policy/location_access.h"
#include "scan/policy/path_policy.h"
#include "scan/policy/search_location.h"
#include "sweep/living_jobs.h"
#include "sweep/living_packages.h"
#include "sweep/named_finds.h"
#include "sweep/orphan_candidates.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace tidwen {
namespace {

/// One application that is gone, while its finds come in.
struct Finds {
    std::string humanName;
    std::vector<Trace> traces;
    bool standsAlone = false; ///< not just receipts that may be those of a tool without any application
};
using FindsByIdentifier = std::map<std::string, Finds>;

/// Places that are reached through links, for telling where a find really lies.
class LinkedPlaces {
  public:
    void add(const Path& place, const Path& real) { places_.emplace_back(place, real); }

    Path resolve(const Path& path) const {
        for (const auto& [place, real] : places_)
            if (path.isWithin(place))
                return Path(real.string() + path.string().substr(place.string().size()));
        return path;
    }

  private:
    std::vector<std::pair<Path, Path>> places_; ///< few: a Mac has none
};

/// Would taking the find away take along what is at work, by the find's name or where it really lies?
bool holdsWhatIsInUse(const KnownOwners& owners, const Path& find, const LinkedPlaces& linked) {
    if (owners.holdsWhatIsInUse(find)) return true;
    const auto real = linked.resolve(find);
    return real != find && owners.holdsWhatIsInUse(real);
}

/// Decides which candidates are nobody's, and remembers the answer per identifier.
class OwnerJudge {
  public:
    OwnerJudge(const KnownOwners& owners, const RunningApplications& running,
               const OrphanScanner::IsRegistered& isRegistered, const std::set<std::string>& protectedIDs)
        : owners_(owners), running_(running), isRegistered_(isRegistered) {
        for (const auto& identifier : protectedIDs)
            protected_.insert(lowercased(identifier));
    }

    bool isOrphan(const OrphanCandidate& candidate) {
        if (!candidate.folder.empty() && owners_.ownsFolder(candidate.folder)) return false;
        return isNobodys(candidate.identifier) && (candidate.alias.empty() || isNobodys(candidate.alias));
    }

  private:
    bool isNobodys(const std::string& identifier) {
        const auto known = answers_.find(identifier);
        if (known != answers_.end()) return known->second;
        return answers_[identifier] = judge(identifier);
    }

    bool judge(const std::string& identifier) const {
        if (owners_.claims(identifier)) return false;
        // A helper's identifier continues its application's: every shorter form is asked for too.
        std::string form = identifier;
        do {
            if (protected_.contains(form) || running_.isRunning(form) || isRegistered_(form)) return false;
            form.resize(form.rfind('.'));
        } while (isReverseDns(form));
        return true;
    }

    const KnownOwners& owners_;
    const RunningApplications& running_;
    const OrphanScanner::IsRegistered& isRegistered_;
    std::set<std::string> protected_;
    std::map<std::string, bool> answers_;
};

const Path& pathOf(const OrphanCandidate& candidate) {
    return *movedPath(candidate.action);
}

Trace makeOrphanTrace(OrphanCandidate candidate) {
    auto name = pathOf(candidate).string();
    return makeTrace(candidate.category, std::move(candidate.action),
                     {MatchReason::Kind::exactBundleID, std::move(candidate.identifier)},
                     Reversibility::reversible, std::move(name), std::nullopt, candidate.requiresRoot);
}

void measure(const FileSystem& files, std::vector<Trace>& traces, const StopToken& stop) {
    parallelFor(traces.size(), [&](std::size_t i) {
        if (stop.stopRequested()) return;
        if (const auto size = files.treeSize(*movedPath(traces[i].action), traceSizeEntryLimit, stop))
            traces[i].sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
    });
}

/// Looks through the search locations for what seems to be nobody's.
class LocationSweep {
  public:
    LocationSweep(const OrphanScanner::Ports& ports, const BudgetedFiles& files, const UserEnvironment& user,
                  const KnownOwners& owners, const std::set<std::string>& lostPackages, OwnerJudge& judge,
                  const std::vector<SweepGap>& gaps, const StopToken& stop)
        : ports_(ports),
          files_(files),
          user_(user),
          policy_(user, ports.files),
          owners_(owners),
          lostPackages_(lostPackages),
          judge_(judge),
          gaps_(gaps),
          stop_(stop) {}

    FindsByIdentifier run(OrphanScanResult& result, const OrphanScanner::OnFound& onFound) {
        const auto locations = searchLocations(user_);
        for (const auto& location : locations)
            searched_.insert(location.url);
        for (const auto& location : locations) {
            if (stop_.stopRequested()) break;
            const auto access = accessTo(location.url, files_, policy_);
            if (access == LocationAccess::absent || !isFirstWayTo(location)) continue;
            auto candidates = access == LocationAccess::closed
                                  ? std::nullopt
                                  : listOrphanCandidates(files_, location, result.skippedNames, stop_);
            if (candidates) {
                take(std::move(candidates->identified), onFound);
                keepLoose(location, *candidates);
                keepNamed(std::move(candidates->named));
            } else {
                ports_.log.warning("Unreadable location {}", location.url.string());
                result.unreadableLocations.push_back(location.url);
            }
        }
        takeLoose(onFound);
        return std::move(finds_);
    }

    const LinkedPlaces& linked() const { return linked_; }
    /// What has no identifier and may be taken all the same, if it is some group's.
    std::vector<NamedCandidate> takeNamed() { return std::move(named_); }

  private:
    /// Not a location that is a link to another one.
    bool isFirstWayTo(const SearchLocation& location) {
        const auto place = ports_.files.resolve(location.url);
        if (!place || *place == location.url) return true;
        linked_.add(location.url, *place);
        return searched_.insert(*place).second;
    }

    bool isClaimable(const OrphanCandidate& candidate) {
        const auto& path = pathOf(candidate);
        return canJudge(path, user_, gaps_) && judge_.isOrphan(candidate)
               && !holdsWhatIsInUse(owners_, path, linked_) && !policy_.check(path);
    }

    /// What looks like an identifier is one when macOS itself named something so and it stands elsewhere,
    /// too.
    struct Loose {
        std::vector<OrphanCandidate> candidates;
        std::set<Path> locations;
        bool isNamedByMacOS = false;
    };

    void keepLoose(const SearchLocation& location, LocationCandidates& found) {
        for (auto& candidate : found.loose) {
            auto& same = loose_[candidate.identifier];
            same.candidates.push_back(std::move(candidate));
            same.locations.insert(location.url);
            same.isNamedByMacOS |= found.isMadeByMacOS;
        }
    }

    void takeLoose(const OrphanScanner::OnFound& onFound) {
        std::set<Path> taken;
        for (auto& [identifier, same] : loose_) {
            if (!same.isNamedByMacOS || same.locations.size() < 2) continue;
            for (const auto& candidate : same.candidates)
                taken.insert(pathOf(candidate));
            take(std::move(same.candidates), onFound);
        }
        loose_.clear();
        std::erase_if(named_, [&](const NamedCandidate& named) { return taken.contains(named.path); });
    }

    void take(std::vector<OrphanCandidate> candidates, const OrphanScanner::OnFound& onFound) {
        std::vector<Trace> traces;
        for (auto& candidate : candidates) {
            if (!isClaimable(candidate)) continue;
            auto& finds = finds_[candidate.identifier];
            if (finds.humanName.empty()) finds.humanName = candidate.humanName;
            finds.standsAlone |=
                candidate.category != TraceCategory::receipts || lostPackages_.contains(candidate.identifier);
            traces.push_back(makeOrphanTrace(std::move(candidate)));
        }
        candidates = {}; // there may be very many
        measure(ports_.files, traces, stop_);
        if (onFound && !traces.empty() && traces.front().category != TraceCategory::receipts) onFound(traces);
        for (auto& trace : traces)
            finds_.find(trace.reason.value)->second.traces.push_back(std::move(trace));
    }

    void keepNamed(std::vector<NamedCandidate> candidates) {
        for (auto& candidate : candidates)
            if (canJudge(candidate.path, user_, gaps_) && !owners_.mayMean(canonicalForm(candidate.name))
                && !holdsWhatIsInUse(owners_, candidate.path, linked_) && !policy_.check(candidate.path))
                named_.push_back(std::move(candidate));
    }

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

/// Puts "com.example.app.helper" to "com.example.app" when both were found: they are one application's.
FindsByIdentifier joined(FindsByIdentifier&& byIdentifier) {
    FindsByIdentifier owners;
    // A shorter form comes before what continues it. Taken out one by one: there may be very many.
    while (!byIdentifier.empty()) {
        auto node = byIdentifier.extract(byIdentifier.begin());
        auto form = node.key();
        while (isReverseDns(form) && !owners.contains(form))
            form.resize(form.rfind('.'));
        const auto known = owners.find(form);
        if (known == owners.end()) {
            owners.insert(owners.end(), std::move(node));
            continue;
        }
        auto &owner = known->second, &finds = node.mapped();
        std::move(finds.traces.begin(), finds.traces.end(), std::back_inserter(owner.traces));
        if (owner.humanName.empty()) owner.humanName = finds.humanName;
        owner.standsAlone |= finds.standsAlone;
    }
    return owners;
}

/// "Tidepool" of "com.example.tidepool".
std::string nameFromIdentifier(const std::string& identifier) {
    auto name = nameInIdentifier(identifier);
    if (!name.empty() && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

/// The finds that `isStill` an orphan's, by identifier.
std::vector<OrphanGroup> grouped(FindsByIdentifier&& finds, const KnownOwners& owners,
                                 const std::function<bool(const Trace&)>& isStill) {
    std::vector<OrphanGroup> groups;
    groups.reserve(finds.size());
    for (; !finds.empty(); finds.erase(finds.begin())) {
        auto& [identifier, each] = *finds.begin();
        std::erase_if(each.traces, [&](const Trace& trace) { return !isStill(trace); });
        if (!each.standsAlone || each.traces.empty() || owners.claims(identifier)) continue;
        auto name = each.humanName.empty() ? nameFromIdentifier(identifier) : std::move(each.humanName);
        groups.push_back({identifier, std::move(name), std::move(each.traces)});
    }
    return groups;
}

/// Measures the finds that have only a name, and hands them on, as the others were when they were found.
void measureNamed(std::vector<OrphanGroup>& groups, const FileSystem& files, const StopToken& stop,
                  const OrphanScanner::OnFound& onFound) {
    for (auto& group : groups) {
        const auto first =
            std::stable_partition(group.traces.begin(), group.traces.end(), [](const Trace& trace) {
                return trace.reason.kind != MatchReason::Kind::nameToken;
            });
        std::vector<Trace> named(std::make_move_iterator(first), std::make_move_iterator(group.traces.end()));
        group.traces.erase(first, group.traces.end());
        measure(files, named, stop);
        if (onFound && !named.empty()) onFound(named);
        std::move(named.begin(), named.end(), std::back_inserter(group.traces));
    }
}

void sortBySize(std::vector<OrphanGroup>& groups) {
    std::stable_sort(groups.begin(), groups.end(),
                     [](const auto& a, const auto& b) { return a.bytes() > b.bytes(); });
}

/// Nothing that is found could be told to be nobody's.
bool hideEverything(const std::vector<SweepGap>& gaps) {
    return std::any_of(gaps.begin(), gaps.end(), [](const SweepGap& gap) { return !gap.isOfOthers; });
}

} // namespace

std::int64_t OrphanGroup::bytes() const {
    std::int64_t sum = 0;
    for (const auto& trace : traces)
        sum += trace.sizeBytes.value_or(0);
    return sum;
}

OrphanScanner::Look OrphanScanner::lookForOwners(InstalledBundles& installed, const StopToken& stop) const {
    const auto bundles = installed.look(InstalledBundles::Reach::further, stop);
    bundles->readAllContents(stop);
    KnownOwners owners(*bundles);
    const auto jobs = listLivingJobs(ports_.files, user_, owners, stop);
    owners.add(jobs.labels);
    owners.addWithoutMaker(jobs.helpers);
    owners.addPrograms(jobs.programs);
    return {std::move(owners), findSweepGaps(ports_.files, user_, *bundles, jobs.unreadable)};
}

OrphanScanResult OrphanScanner::scan(InstalledBundles& installed, const std::set<std::string>& protectedIDs,
                                     const StopToken& stop, const OnFound& onFound) {
    auto [owners, gaps] = lookForOwners(installed, stop);
    const auto packages = listLivingPackages(ports_.files, ports_.receipts, user_, owners, stop);
    owners.add(packages.identifiers);
    OrphanScanResult result;
    if (stop.stopRequested()) return result;
    const BudgetedFiles files(ports_.files);
    OwnerJudge judge(owners, ports_.running, isRegistered_, protectedIDs);
    LocationSweep sweep(ports_, files, user_, owners, packages.lost, judge, gaps, stop);
    auto finds = sweep.run(result, onFound);

    // Applications that were installed meanwhile, or stood elsewhere or were being updated at the first look.
    // Where nothing is claimed, they change nothing.
    if (!hideEverything(gaps)) {
        const auto now = lookForOwners(installed, stop);
        if (stop.stopRequested()) return result;
        for (const auto& gap : now.gaps)
            if (std::find(gaps.begin(), gaps.end(), gap) == gaps.end()) gaps.push_back(gap);
        const auto isStill = [&](const Path& path) {
            return canJudge(path, user_, gaps) && !holdsWhatIsInUse(now.owners, path, sweep.linked());
        };
        result.groups = grouped(joined(std::move(finds)), now.owners, [&](const Trace& trace) {
            const auto& path = *movedPath(trace.action);
            const bool isCalledAfterAnOwner = trace.category == TraceCategory::containers
                                              && now.owners.claims(identifierInName(path.lastComponent()));
            return !isCalledAfterAnOwner && isStill(path);
        });
        auto named = sweep.takeNamed();
        std::erase_if(named, [&](const NamedCandidate& each) { return !isStill(each.path); });
        addNamedFinds(result.groups, named, now.owners);
        measureNamed(result.groups, ports_.files, stop, onFound);
        sortBySize(result.groups);
    }
    if (stop.stopRequested()) return result;
    result.gaps = std::move(gaps);
    result.leftOut = files.budget().leftOut();
    return result;
}

} // namespace tidwen
