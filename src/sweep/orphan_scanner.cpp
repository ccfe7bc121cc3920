#include "sweep/orphan_scanner.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "quarantine/history.h"
#include "scan/policy/trace_category.h"
#include "sweep/former_names.h"
#include "sweep/identifier_domains.h"
#include "sweep/linked_places.h"
#include "sweep/living_jobs.h"
#include "sweep/living_packages.h"
#include "sweep/location_sweep.h"
#include "sweep/named_finds.h"
#include "sweep/owner_judge.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

namespace tidwen {
namespace {

/// Merges "com.example.app.helper" into "com.example.app" when both were found: they belong to one
/// application.
FindsByIdentifier joined(FindsByIdentifier&& byIdentifier) {
    FindsByIdentifier owners;
    // A shorter form comes before what continues it. Removed one by one, because there may be very many.
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

/// The finds whose owner is still missing according to `isStill`, by identifier.
std::vector<OrphanGroup> grouped(FindsByIdentifier&& finds, const KnownOwners& owners,
                                 const FormerNames& former,
                                 const std::function<bool(const Trace&)>& isStill) {
    std::vector<OrphanGroup> groups;
    groups.reserve(finds.size());
    for (; !finds.empty(); finds.erase(finds.begin())) {
        auto& [identifier, each] = *finds.begin();
        std::erase_if(each.traces, [&](const Trace& trace) { return !isStill(trace); });
        if (!each.standsAlone || each.traces.empty() || owners.claims(identifier)) continue;
        auto name = each.humanName.empty() ? formerName(former, identifier) : std::move(each.humanName);
        if (name.empty()) name = nameFromIdentifier(identifier);
        groups.push_back({identifier, std::move(name), std::move(each.traces)});
    }
    return groups;
}

/// Adds groups, still empty, for applications of past removals of which only finds with a name may be left.
void addFormer(std::vector<OrphanGroup>& groups, const FormerNames& former, const KnownOwners& owners,
               OwnerJudge& judge) {
    std::set<std::string> identifiers, names;
    for (const auto& group : groups) {
        identifiers.insert(group.bundleID);
        names.insert({canonicalForm(group.name), canonicalForm(nameInIdentifier(group.bundleID))});
    }
    for (const auto& [identifier, name] : former) {
        auto form = identifier;
        while (isReverseDns(form) && !identifiers.contains(form))
            form.resize(form.rfind('.'));
        const bool isKnown = identifiers.contains(form) || names.contains(canonicalForm(name));
        if (isKnown || owners.claims(identifier) || !judge.isNobodys(identifier)) continue;
        identifiers.insert(identifier);
        groups.push_back({identifier, name, {}});
    }
}

/// Measures the finds that have only a name and passes them on, as was done for the others when found.
void measureNamed(std::vector<OrphanGroup>& groups, const FileSystem& files, const StopToken& stop,
                  const OrphanScanner::OnFound& onFound) {
    const auto isNamed = [](const Trace& trace) { return trace.reason.kind == MatchReason::Kind::nameToken; };
    for (auto& group : groups) {
        // They are at the end.
        const auto first = std::find_if(group.traces.begin(), group.traces.end(), isNamed);
        if (first == group.traces.end()) continue;
        std::vector<Trace> named(std::make_move_iterator(first), std::make_move_iterator(group.traces.end()));
        group.traces.erase(first, group.traces.end());
        measureTraces(files, named, stop);
        if (onFound) onFound(named);
        std::move(named.begin(), named.end(), std::back_inserter(group.traces));
    }
}

/// A package that has lost its list of files may still be in use, and with it what its maker left.
void contest(std::vector<OrphanGroup>& groups, const std::map<std::string, Path>& unlistedPackages) {
    std::map<std::string_view, Claimant> claimants;
    for (const auto& [package, receipt] : unlistedPackages)
        claimants.try_emplace(makerOf(package), Claimant{package, package, receipt});
    for (auto& group : groups) {
        const auto claimant = claimants.find(makerOf(group.bundleID));
        if (claimant == claimants.end()) continue;
        for (auto& trace : group.traces)
            if (trace.category != TraceCategory::receipts) trace.contestedBy = claimant->second;
    }
}

void sortBySize(std::vector<OrphanGroup>& groups) {
    std::stable_sort(groups.begin(), groups.end(),
                     [](const auto& a, const auto& b) { return a.bytes().bytes > b.bytes().bytes; });
}

/// No find can be judged to have no owner.
bool hideEverything(const std::vector<SweepGap>& gaps) {
    return std::any_of(gaps.begin(), gaps.end(), [](const SweepGap& gap) { return !gap.isOfOthers; });
}

} // namespace

ByteSum OrphanGroup::bytes() const {
    ByteSum sum;
    for (const auto& trace : traces)
        sum.add(trace.sizeBytes, trace.isSizePartial);
    return sum;
}

OrphanScanner::Look OrphanScanner::lookForOwners(const BundleSnapshot& bundles, const StopToken& stop) const {
    bundles.readAllContents(stop);
    KnownOwners owners(bundles);
    const auto jobs = listLivingJobs(ports_.files, user_, owners, stop);
    owners.add(jobs.labels);
    owners.addWithoutMaker(jobs.helpers);
    owners.addPrograms(jobs.programs);
    return {std::move(owners), findSweepGaps(ports_.files, user_, bundles, jobs.unreadable)};
}

OrphanScanResult OrphanScanner::scan(InstalledBundles& installed, const std::set<std::string>& protectedIDs,
                                     const StopToken& stop, const OnFound& onFound, const OnStep& onStep) {
    auto [owners, gaps] = lookForOwners(*installed.look(InstalledBundles::Reach::further, stop), stop);
    const auto packages = listLivingPackages(ports_.files, ports_.receipts, user_, owners, stop);
    owners.add(packages.identifiers);
    for (const auto& place : packages.unreadable)
        gaps.push_back(gapAt(ports_.files, user_, place));
    OrphanScanResult result;
    if (stop.stopRequested()) return result;
    const BudgetedFiles files(ports_.files);
    OwnerJudge judge(owners, ports_.running, isRegistered_, protectedIDs);
    LocationSweep sweep(ports_, files, user_, owners, packages, judge, gaps, stop);
    auto finds = sweep.run(result, onFound, onStep);
    owners.addWithoutMaker(sweep.identifiersWithin());

    // Applications that were installed meanwhile, or were elsewhere or being updated during the first look.
    // Irrelevant when nothing is claimed.
    if (!hideEverything(gaps)) {
        auto now = lookForOwners(*installed.look(InstalledBundles::Reach::further, stop), stop);
        if (stop.stopRequested()) return result;
        now.owners.addWithoutMaker(sweep.identifiersWithin());
        for (const auto& gap : now.gaps)
            if (std::find(gaps.begin(), gaps.end(), gap) == gaps.end()) gaps.push_back(gap);
        const auto isStill = [&](const Path& path) {
            return canJudge(path, user_, gaps) && !holdsWhatIsInUse(now.owners, path, sweep.linked());
        };
        const auto former = formerNames(ports_.files, loadHistory(user_, ports_.files, false));
        result.groups = grouped(joined(std::move(finds)), now.owners, former, [&](const Trace& trace) {
            const auto& path = *movedPath(trace.action);
            const bool isCalledAfterAnOwner = trace.category == TraceCategory::containers
                                              && now.owners.claims(identifierInName(path.lastComponent()));
            return !isCalledAfterAnOwner && isStill(path);
        });
        auto named = sweep.takeNamed();
        std::erase_if(named, [&](const NamedCandidate& each) { return !isStill(each.path); });
        addFormer(result.groups, former, now.owners, judge);
        addNamedFinds(result.groups, named, now.owners);
        std::erase_if(result.groups, [](const OrphanGroup& group) { return group.traces.empty(); });
        measureNamed(result.groups, ports_.files, stop, onFound);
        contest(result.groups, packages.unlisted);
        sortBySize(result.groups);
    }
    if (stop.stopRequested()) return result;
    result.gaps = std::move(gaps);
    result.leftOut = files.budget().leftOut();
    return result;
}

Reclaimed OrphanScanner::reclaimed(InstalledBundles& installed, const std::vector<EarlierFinds>& finds,
                                   const std::set<std::string>& protectedIDs) const {
    const auto bundles = installed.look(InstalledBundles::Reach::further);
    const auto now = lookForOwners(*bundles, {});
    OwnerJudge judge(now.owners, ports_.running, isRegistered_, protectedIDs);
    const ReclaimedFinds claims({ports_.files, user_, ports_.running, *bundles, now.owners, now.gaps, judge});
    Reclaimed reclaimed;
    for (const auto& each : finds)
        for (const auto& trace : each.traces)
            if (auto why = claims.whyReclaimed(trace, each.bundleID))
                reclaimed.emplace(trace.id, std::move(*why));
    return reclaimed;
}

} // namespace tidwen
