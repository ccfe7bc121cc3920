#include "sweep/orphan_scanner.h"

#include "base/parallel.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "scan/path_policy.h"
#include "scan/residue_scanner.h"
#include "scan/search_location.h"
#include "sweep/living_jobs.h"
#include "sweep/living_packages.h"
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
    bool hasMoreThanReceipts = false;
};

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
        return isNobodys(candidate.identifier) && !owners_.holdsApplication(*movedPath(candidate.action));
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
        for (std::string form = identifier; isReverseDns(form); form.resize(form.rfind('.')))
            if (protected_.contains(form) || running_.isRunning(form) || isRegistered_(form)) return false;
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

/// Puts "com.example.app.helper" to "com.example.app" when both were found: they are one application's.
std::map<std::string, Finds> joined(std::map<std::string, Finds>&& byIdentifier) {
    std::map<std::string, Finds> owners;
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
        owner.hasMoreThanReceipts |= finds.hasMoreThanReceipts;
    }
    return owners;
}

/// The last piece of an identifier, as a name: "Tidepool" of "com.example.tidepool".
std::string nameFromIdentifier(const std::string& identifier) {
    auto name = identifier.substr(identifier.rfind('.') + 1);
    if (!name.empty() && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

} // namespace

std::int64_t OrphanGroup::bytes() const {
    std::int64_t sum = 0;
    for (const auto& trace : traces)
        sum += trace.sizeBytes.value_or(0);
    return sum;
}

OrphanScanner::Look OrphanScanner::lookForOwners(InstalledBundles& installed, const StopToken& stop) const {
    const auto bundles = installed.look(stop);
    bundles->readAllContents(stop);
    KnownOwners owners(*bundles);
    const auto jobs = listLivingJobs(ports_.files, user_, owners, stop);
    owners.add(jobs.labels);
    owners.addWithoutMaker(jobs.helpers);
    return {std::move(owners), findSweepGaps(ports_.files, user_, *bundles, jobs.unreadable)};
}

OrphanScanResult OrphanScanner::scan(InstalledBundles& installed, const std::set<std::string>& protectedIDs,
                                     const StopToken& stop, const OnFound& onFound) {
    auto [owners, gaps] = lookForOwners(installed, stop);
    owners.add(listLivingPackages(ports_.files, ports_.receipts, user_, owners, stop));
    OrphanScanResult result;
    if (stop.stopRequested()) return result;
    const BudgetedFiles files(ports_.files);
    OwnerJudge judge(owners, ports_.running, isRegistered_, protectedIDs);
    const PathPolicy policy(user_);
    std::map<std::string, Finds> byIdentifier;
    const auto locations = searchLocations(user_);
    std::set<Path> linkedPlaces; // each is searched once, whatever leads to it
    for (const auto& location : locations)
        linkedPlaces.insert(location.url);
    for (const auto& location : locations) {
        if (stop.stopRequested()) break;
        // A location that is a link to another one, or to what must not be touched.
        const auto place = ports_.files.resolve(location.url);
        if (place && *place != location.url
            && (!linkedPlaces.insert(*place).second || policy.check(*place / "item")))
            continue;
        auto candidates = listOrphanCandidates(files, location, result.skippedNames, stop);
        if (!candidates) {
            ports_.log.warning("Unreadable location {}", location.url.string());
            result.unreadableLocations.push_back(location.url);
            continue;
        }
        std::erase_if(*candidates, [&](const auto& candidate) {
            return !canJudge(pathOf(candidate), user_, gaps) || !judge.isOrphan(candidate)
                   || policy.check(pathOf(candidate));
        });
        std::vector<Trace> traces;
        for (auto& candidate : *candidates) {
            auto& finds = byIdentifier[candidate.identifier];
            if (finds.humanName.empty()) finds.humanName = candidate.humanName;
            finds.hasMoreThanReceipts |= candidate.category != TraceCategory::receipts;
            traces.push_back(makeOrphanTrace(std::move(candidate)));
        }
        measure(ports_.files, traces, stop);
        if (onFound && !traces.empty() && location.category != TraceCategory::receipts) onFound(traces);
        for (auto& trace : traces) {
            auto& finds = byIdentifier[trace.reason.value];
            finds.traces.push_back(std::move(trace));
        }
    }

    // Applications that were installed meanwhile, or stood elsewhere or were being updated at the first look.
    const auto now = lookForOwners(installed, stop);
    if (stop.stopRequested()) return result;
    for (const auto& gap : now.gaps)
        if (std::find(gaps.begin(), gaps.end(), gap) == gaps.end()) gaps.push_back(gap);
    result.gaps = gaps;
    result.leftOut = files.budget().leftOut();
    auto goneOwners = joined(std::move(byIdentifier));
    result.groups.reserve(goneOwners.size());
    while (!goneOwners.empty()) {
        const auto node = goneOwners.extract(goneOwners.begin());
        const auto& identifier = node.key();
        auto& finds = node.mapped();
        std::erase_if(finds.traces, [&](const Trace& trace) {
            const auto& path = *movedPath(trace.action);
            return !canJudge(path, user_, gaps) || now.owners.holdsApplication(path);
        });
        // A receipt alone may be that of a tool without any application.
        if (!finds.hasMoreThanReceipts || finds.traces.empty() || now.owners.claims(identifier)) continue;
        auto name = finds.humanName.empty() ? nameFromIdentifier(identifier) : finds.humanName;
        result.groups.push_back({identifier, std::move(name), std::move(finds.traces)});
    }
    std::stable_sort(result.groups.begin(), result.groups.end(),
                     [](const auto& a, const auto& b) { return a.bytes() > b.bytes(); });
    return result;
}

} // namespace tidwen
