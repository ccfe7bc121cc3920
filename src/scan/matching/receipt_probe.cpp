#include "scan/matching/receipt_probe.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/location_scan.h"
#include "scan/matching/trace.h"
#include "scan/policy/root_needed.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tidwen {

namespace {

// Longer lists are not read to the end; people could not review so many traces either.
constexpr std::size_t mostListedPaths = 100'000;
constexpr std::size_t mostTraces = 2'000;

/// A set of paths, compared as Mac file systems do, that also answers what lies inside them.
class ClosedPaths {
  public:
    void add(const Path& path) { keys_.insert(key(path)); }

    /// The path is one of them or inside one.
    bool cover(const Path& path) const {
        const auto text = key(path);
        for (auto end = text.find('/', 1);; end = text.find('/', end + 1)) {
            if (keys_.contains(std::string_view(text).substr(0, end))) return true;
            if (end == text.npos) return false;
        }
    }

    /// One of them lies inside the path.
    bool lieWithin(const Path& path) const {
        const auto text = key(path) + "/";
        const auto next = keys_.lower_bound(text);
        return next != keys_.end() && next->starts_with(text);
    }

  private:
    static std::string key(const Path& path) { return folded(path.string()); }

    std::set<std::string, std::less<>> keys_;
};

/// What packages of other applications list too, read on first use. Packages without an installed application
/// protect nothing.
class OtherPackages {
  public:
    OtherPackages(const ScanContext& context, const Receipts& receipts)
        : context_(context), receipts_(receipts) {}

    std::optional<Claimant> listing(const Path& path) {
        if (!isRead_) read();
        isRead_ = true;
        const auto found = listed_.find(fileNameKey(path.string()));
        return found == listed_.end() ? std::nullopt : std::optional(claimants_[found->second]);
    }

  private:
    void read() {
        for (const auto& packageID : receipts_.packageIDs()) {
            if (context_.stop.stopRequested()) return;
            const auto own = context_.matcher.attributeIdentifier(packageID);
            if (own && own->reason.kind == MatchReason::Kind::exactBundleID) continue;
            auto owner = context_.matcher.others().longestContinued(folded(packageID));
            const auto receipt = owner ? receipts_.read(packageID) : std::nullopt;
            if (!receipt) continue;
            claimants_.push_back(std::move(*owner));
            for (const auto& file : receipt->files) {
                if (listed_.size() == mostListedPaths) return;
                listed_.emplace(fileNameKey((receipt->installBase / file).standardized().string()),
                                claimants_.size() - 1);
            }
        }
    }

    const ScanContext& context_;
    const Receipts& receipts_;
    bool isRead_ = false;
    std::vector<Claimant> claimants_;
    std::unordered_map<std::string, std::size_t> listed_;
};

class ReceiptProbe {
  public:
    ReceiptProbe(const ScanContext& context, const Receipts& receipts, const std::vector<Path>& applications,
                 TraceCollector& traces)
        : context_(context), otherPackages_(context, receipts), traces_(traces) {
        if (!context.targetPlace.isRoot()) { // else the target is gone
            closed_.add(context.matcher.target().bundleURL.standardized());
            closed_.add(context.targetPlace);
        }
        for (const auto& application : applications)
            closed_.add(application);
        for (const auto& trace : traces.traces())
            if (const auto* path = movedPath(trace.action)) closed_.add(path->standardized());
    }

    void judge(const Receipt& receipt, const std::optional<Claimant>& contestedBy) {
        for (const auto& path : listedPaths(receipt)) {
            if (context_.stop.stopRequested() || taken_ >= mostTraces) return;
            if (!closed_.cover(path) && !context_.policy.check(path))
                judge(path, receipt.packageID, contestedBy);
        }
    }

    bool isFull() const { return taken_ >= mostTraces; }

  private:
    /// Sorted, so that a folder comes before its contents. Paths that leave the base are dropped.
    static std::vector<Path> listedPaths(const Receipt& receipt) {
        const Path base = receipt.installBase.standardized();
        std::vector<Path> paths;
        for (const auto& file : receipt.files) {
            if (paths.size() == mostListedPaths) break;
            if (auto path = (base / file).standardized(); path.isWithin(base))
                paths.push_back(std::move(path));
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    void judge(const Path& path, const std::string& packageID, const std::optional<Claimant>& contestedBy) {
        if (isOffLimits(path)) return; // regardless of what the package installed there
        const auto realPath = context_.files.resolveParent(path);
        if (!realPath || closed_.cover(*realPath) || isOffLimits(*realPath)) return;
        // The matcher has already searched the places for application data in a home; anything else there
        // belongs to the user, whatever a package says.
        if (isInHome(path, *realPath)) return;
        const auto info = context_.files.info(path);
        if (!info) return;
        // A link to a folder may be the path through which others are installed.
        if (closed_.lieWithin(path)) return;
        const bool isFolder = info->kind == FileKind::directory;
        if (isFolder && !isTargetsFolder(path)) return;
        const bool isBundle = isFolder && isBundleName(path.lastComponent());
        const auto identity = isBundle ? identityOf(path, *realPath) : std::nullopt;
        if (identity && context_.matcher.isOffLimits(identity->bundleID)) return;
        const bool isOwnBundle = identity && context_.matcher.isOwnIdentifier(identity->bundleID);

        const auto job = launchItem(path);
        auto trace = makeTrace(path, packageID, job);
        trace.contestedBy = contestedBy;
        if (!trace.contestedBy && job) trace.contestedBy = jobClaimant(*job);
        if (!trace.contestedBy) trace.contestedBy = claimant(path);
        if (!trace.contestedBy && !isOwnBundle) trace.contestedBy = identity;
        if (!trace.contestedBy) context_.held.mark(trace, path, *realPath);
        if ((!isFolder || isBundle) && !job) {
            if (!trace.contestedBy) trace.contestedBy = otherPackages_.listing(path);
            trace.isOnlyListed = !isOwnBundle && !namesTarget(path);
        }
        if (!traces_.addFound(std::move(trace), realPath->parent())) return;
        closed_.add(path);
        closed_.add(*realPath);
        ++taken_;
    }

    bool isInHome(const Path& path, const Path& realPath) const {
        const auto& home = context_.user.home;
        return path.isWithinIgnoringCase(home) || realPath.isWithinIgnoringCase(home)
               || realPath.isWithinIgnoringCase(context_.files.resolve(home).value_or(home));
    }

    /// A bundle's own identifier decides its owner, whatever package installed it.
    std::optional<Claimant> identityOf(const Path& path, const Path& realPath) const {
        const auto bundle = Bundle::open(context_.files, path);
        const auto bundleID = bundle ? bundle->identifier() : std::nullopt;
        if (!bundleID) return std::nullopt;
        return Claimant{.bundleID = *bundleID, .name = bundle->name(), .place = realPath};
    }

    bool isOffLimits(const Path& path) const {
        const auto parts = path.components();
        return std::any_of(parts.begin(), parts.end(),
                           [&](const auto& part) { return context_.matcher.isOffLimits(part); });
    }

    bool isTargetsFolder(const Path& folder) const {
        const auto name = folder.lastComponent();
        return isBundleName(name) || context_.matcher.attribute(name);
    }

    bool namesTarget(const Path& path) const {
        const auto parts = path.components();
        const bool isBundles = isBundleName(parts.back()) && context_.matcher.mayClaimBundle(parts.back());
        return isBundles || std::any_of(parts.begin(), parts.end(), [&](const auto& part) {
                   return context_.matcher.attribute(part).has_value();
               });
    }

    /// Another application named by one of the path's components.
    std::optional<Claimant> claimant(const Path& path) const {
        for (const auto& component : path.components()) {
            if (const auto own = context_.matcher.attribute(component)) {
                if (own->contestedBy) return own->contestedBy;
            } else if (auto other = otherCalled(component)) {
                return other;
            }
        }
        return std::nullopt;
    }

    std::optional<Claimant> otherCalled(const std::string& component) const {
        const auto& others = context_.matcher.others();
        if (auto other = others.longestContinued(folded(component))) return other;
        const auto canonical = canonicalForm(component);
        return isCommonName(canonical) ? std::nullopt : others.named(canonical);
    }

    /// Who has the better claim to the job by its label or its program's location.
    std::optional<Claimant> jobClaimant(const LaunchItem& job) const {
        if (const auto own = attributeJob(context_, job)) return own->contestedBy;
        if (auto other = context_.matcher.others().longestContinued(folded(job.label))) return other;
        return job.programPath ? holderOf(context_, Path(*job.programPath)) : std::nullopt;
    }

    Trace makeTrace(const Path& path, const std::string& packageID,
                    const std::optional<LaunchItem>& job) const {
        const MatchReason reason = {MatchReason::Kind::receipt, packageID};
        const bool needsRoot = moveNeedsRoot(context_.files, context_.user, path);
        if (job)
            return tidwen::makeTrace(TraceCategory::launchItems,
                                     action::BootoutAndMove{job->label, path, job->isSystemDomain}, reason,
                                     Reversibility::reversible, path.string(), std::nullopt,
                                     needsRoot || job->isSystemDomain);
        return tidwen::makeTrace(TraceCategory::receipts, action::MovePath{path}, reason,
                                 Reversibility::reversible, path.string(), std::nullopt, needsRoot);
    }

    std::optional<LaunchItem> launchItem(const Path& path) const {
        const auto parts = path.components();
        const auto has = [&](std::string_view part) {
            return std::find(parts.begin(), parts.end(), part) != parts.end();
        };
        const bool isDaemon = has("LaunchDaemons");
        if (path.lowercasedExtension() != "plist" || (!isDaemon && !has("LaunchAgents"))) return std::nullopt;
        auto job = readLaunchItem(context_.files, path, isDaemon);
        return job && !context_.matcher.isOffLimits(job->label) ? job : std::nullopt;
    }

    const ScanContext& context_;
    OtherPackages otherPackages_;
    TraceCollector& traces_;
    ClosedPaths closed_;
    std::size_t taken_ = 0;
};

} // namespace

std::vector<Path> probeReceipts(const ScanContext& context, const Receipts& receipts,
                                const std::vector<Path>& applications, TraceCollector& traces) {
    ReceiptProbe probe(context, receipts, applications, traces);
    std::vector<Path> unreadable;
    const auto* budget = BudgetedFiles::budgetOf(context.files);
    for (const auto& packageID : receipts.packageIDs()) {
        if (context.stop.stopRequested()) break;
        // Matching names alone takes long when there are very many.
        if (budget && budget->isExhausted()) {
            budget->leaveOut();
            break;
        }
        const auto found = [&] {
            const ReadBudget::Work work(budget, ReadBudget::Measure::exactly);
            return context.matcher.attributeIdentifier(packageID);
        }();
        // A name is too weak as evidence for attributing a package's whole list to the target.
        if (!found || found->reason.kind != MatchReason::Kind::exactBundleID) continue;
        const auto receipt = receipts.read(packageID);
        if (!receipt) continue;
        // Without its list a receipt says nothing of any file; that is no fault of reading.
        if (const auto& list = receipt->unreadableList; list && mayBeThere(context.files, *list))
            unreadable.push_back(*list);
        probe.judge(*receipt, found->contestedBy);
        if (probe.isFull()) {
            context.log.warning("Receipts list too much; the rest of {} is left out", packageID);
            break;
        }
    }
    return unreadable;
}

} // namespace tidwen
