#include "sweep/location_sweep.h"

#include "base/parallel.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/text.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/application_within.h"
#include "scan/applications/bundle.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/size_measurer.h"
#include "scan/matching/trace.h"
#include "scan/policy/location_access.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"
#include "sweep/known_owners.h"
#include "sweep/sweep_gaps.h"

#include <cstddef>
#include <mutex>
#include <optional>
#include <string_view>

namespace tidwen {
namespace {

constexpr std::size_t mostFoldersOfAFind = 10'000;

const Path& pathOf(const OrphanCandidate& candidate) {
    return *movedPath(candidate.action);
}

Trace makeOrphanTrace(OrphanCandidate candidate) {
    auto name = pathOf(candidate).string();
    return makeTrace(candidate.category, std::move(candidate.action),
                     {MatchReason::Kind::exactBundleID, std::move(candidate.identifier)},
                     Reversibility::reversible, std::move(name), std::nullopt, candidate.requiresRoot);
}

/// A receipt is a property list and a list of files; one without the other is of no use to an installer.
bool isHalfReceipt(const Path& file, const FileSystem& files) {
    const auto extension = file.lowercasedExtension();
    const bool isPart = extension == "plist" || extension == "bom";
    return isPart
           && !mayBeThere(files, file.parent() / (file.stem() + (extension == "bom" ? ".plist" : ".bom")));
}

/// The application, unless it is of the same family as a find with the identifier, whose update or updater it
/// is, or one of the helpers that many applications carry. One that does not say who it is may be anybody's.
std::optional<Claimant> anotherIn(const FileSystem& files, const Path& application,
                                  std::string_view identifier) {
    const auto bundle = Bundle::open(files, application);
    if (!bundle) return Claimant{.bundleID = {}, .name = application.stem(), .place = application};
    const auto declared = bundle->identifier().value_or("");
    const auto inner = lowercased(declared);
    const bool isSameFamily =
        continuesIdentifier(inner, identifier) || continuesIdentifier(identifier, inner);
    if (!inner.empty() && (isSameFamily || isCommonIdentifier(inner))) return std::nullopt;
    return Claimant{.bundleID = declared, .name = bundle->name(), .place = application};
}

} // namespace

void measureTraces(const FileSystem& files, std::vector<Trace>& traces, const StopToken& stop) {
    parallelFor(traces.size(), [&](std::size_t i) {
        if (stop.stopRequested()) return;
        const auto& path = *movedPath(traces[i].action);
        const auto info = files.info(path);
        if (info) traces[i].found = foundItem(*info, traces[i].category);
        if (const auto size = measuredSize(files, path, info, stop)) setSize(traces[i], *size);
    });
}

LocationSweep::LocationSweep(const OrphanScanner::Ports& ports, const BudgetedFiles& files,
                             const UserEnvironment& user, const KnownOwners& owners,
                             const LivingPackages& packages, OwnerJudge& judge,
                             const std::vector<SweepGap>& gaps, const StopToken& stop)
    : ports_(ports),
      files_(files),
      user_(user),
      policy_(user, ports.files),
      owners_(owners),
      packages_(packages),
      judge_(judge),
      gaps_(gaps),
      stop_(stop) {}

FindsByIdentifier LocationSweep::run(OrphanScanResult& result, const OrphanScanner::OnFound& onFound,
                                     const OnStep& onStep) {
    const auto locations = searchLocations(user_);
    for (const auto& location : locations)
        searched_.insert(location.url);
    StepProgress step{.total = locations.size()};
    for (const auto& location : locations) {
        if (stop_.stopRequested()) break;
        ++step.step;
        step.kind = name(location.category);
        step.item = location.url.string();
        if (onStep) onStep(step);
        const auto access = accessTo(location.url, files_, policy_);
        if (access == LocationAccess::absent || !isFirstWayTo(location)) continue;
        auto candidates = access == LocationAccess::closed
                              ? std::nullopt
                              : listOrphanCandidates(files_, location, result.skippedNames, stop_);
        if (candidates) {
            take(std::move(candidates->identified), onFound);
            keepLoose(location, *candidates);
            keepNamed(std::move(candidates->named));
            for (auto& container : candidates->ownerless)
                result.unreadableLocations.push_back(std::move(container));
        } else {
            ports_.log.warning("Unreadable location {}", location.url.string());
            result.unreadableLocations.push_back(location.url);
        }
    }
    takeLoose(onFound);
    return std::move(finds_);
}

/// False for a location that links to another one.
bool LocationSweep::isFirstWayTo(const SearchLocation& location) {
    const auto place = ports_.files.resolve(location.url);
    if (!place || *place == location.url) return true;
    linked_.add(location.url, *place);
    return searched_.insert(*place).second;
}

/// For each, whether it may be moved without taking along what is in use. Very many are checked in parallel;
/// for a few, starting threads takes longer.
std::vector<unsigned char> LocationSweep::areFree(const std::vector<OrphanCandidate>& candidates) const {
    constexpr std::size_t few = 1'000;
    std::vector<unsigned char> areFree(candidates.size()); // not bits: written by several threads
    parallelFor(
        candidates.size(),
        [&](std::size_t i) {
            const auto& path = pathOf(candidates[i]);
            areFree[i] = !holdsWhatIsInUse(owners_, path, linked_) && !policy_.check(path) ? 1 : 0;
        },
        candidates.size() < few ? 1 : 0);
    return areFree;
}

void LocationSweep::take(std::vector<OrphanCandidate> candidates, const OrphanScanner::OnFound& onFound) {
    std::erase_if(candidates, [&](const OrphanCandidate& candidate) {
        return !canJudge(pathOf(candidate), user_, gaps_) || !judge_.isOrphan(candidate);
    });
    const auto isFree = areFree(candidates);
    std::vector<Trace> traces;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!isFree[i]) continue;
        auto& candidate = candidates[i];
        auto& finds = finds_[candidate.identifier];
        if (finds.humanName.empty()) finds.humanName = candidate.humanName;
        const bool isReceipt = candidate.category == TraceCategory::receipts;
        const bool isLost = packages_.lost.contains(candidate.identifier);
        const bool isHalf = isReceipt && isHalfReceipt(pathOf(candidate), ports_.files);
        finds.standsAlone |= !isReceipt || isLost || isHalf;
        traces.push_back(makeOrphanTrace(std::move(candidate)));
        traces.back().mayHoldOthers = policy_.mayBeInAnotherHome(*movedPath(traces.back().action));
    }
    candidates = {}; // frees them early: there may be very many
    contestWhatHoldsOthers(traces);
    measureTraces(ports_.files, traces, stop_);
    if (onFound && !traces.empty() && traces.front().category != TraceCategory::receipts) onFound(traces);
    for (auto& trace : traces)
        finds_.find(trace.reason.value)->second.traces.push_back(std::move(trace));
}

/// Moving a folder takes along the applications in it, whoever's they are. All of them live, so what they own
/// elsewhere is no leftover.
void LocationSweep::contestWhatHoldsOthers(std::vector<Trace>& traces) {
    std::mutex adding;
    parallelFor(traces.size(), [&](std::size_t i) {
        auto& trace = traces[i];
        const auto addOthers = [&](const Path& application) {
            auto holder = anotherIn(ports_.files, application, trace.reason.value);
            if (!holder) return false;
            if (!holder->bundleID.empty()) {
                const std::lock_guard lock(adding);
                within_.push_back(holder->bundleID);
            }
            if (!trace.contestedBy) trace.contestedBy = std::move(*holder);
            return false;
        };
        std::size_t foldersLeft = mostFoldersOfAFind;
        const auto searched =
            visitApplicationsWithin(ports_.files, *movedPath(trace.action), foldersLeft, addOthers, stop_);
        if (searched == Searched::partly) trace.mayHoldOthers = true;
    });
}

void LocationSweep::keepLoose(const SearchLocation& location, LocationCandidates& found) {
    for (auto& candidate : found.loose) {
        auto& same = loose_[candidate.identifier];
        same.candidates.push_back(std::move(candidate));
        same.locations.insert(location.url);
        same.isNamedByMacOS |= found.isMadeByMacOS;
    }
}

void LocationSweep::takeLoose(const OrphanScanner::OnFound& onFound) {
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

void LocationSweep::keepNamed(std::vector<NamedCandidate> candidates) {
    for (auto& candidate : candidates)
        if (canJudge(candidate.path, user_, gaps_) && !owners_.mayMean(canonicalForm(candidate.name))
            && !holdsWhatIsInUse(owners_, candidate.path, linked_) && !policy_.check(candidate.path)) {
            candidate.mayHoldOthers = policy_.mayBeInAnotherHome(candidate.path);
            named_.push_back(std::move(candidate));
        }
}

} // namespace tidwen
