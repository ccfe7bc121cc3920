#include "scan/applications/installed_bundles.h"

#include "base/parallel.h"
#include "base/path.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "platform/file_absence.h"
#include "posix/copied_move.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_contents.h"
#include "scan/applications/bundle_memory.h"
#include "scan/applications/bundle_places.h"
#include "scan/applications/bundle_search.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/read_trail.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>

namespace tidwen {
namespace {

void addName(std::vector<std::string>& names, std::string name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(std::move(name));
}

/// The bundle with the parts of its Info.plist that reading its contents needs.
std::shared_ptr<const Bundle> forContents(const Bundle& bundle) {
    auto kept = std::make_shared<Bundle>(
        Bundle{.root = bundle.root, .contents = bundle.contents, .infoFile = bundle.infoFile, .info = {}});
    kept->isDamaged = bundle.isDamaged;
    if (!bundle.info) return kept;
    kept->info.emplace();
    for (const auto key : keysOfContents)
        if (const auto found = bundle.info->find(key); found != bundle.info->end())
            kept->info->insert(*found);
    return kept;
}

BundleIdentity readIdentity(const FileSystem& files, const Path& place, bool keepsOpened) {
    BundleIdentity identity;
    const auto opened = Bundle::open(files, place);
    if (!opened) {
        identity.isDamaged = mayBeThere(files, place);
        return identity;
    }
    identity.isThere = true;
    if (keepsOpened) identity.opened = forContents(*opened);
    identity.isReadable = opened->info.has_value();
    identity.isDamaged = opened->isDamaged;
    if (!identity.isReadable) return identity;
    identity.bundleID = opened->identifier().value_or("");
    if (auto name = opened->name(); !name.empty()) identity.name = std::move(name);
    for (const auto* key : {"CFBundleName", "CFBundleDisplayName", "CFBundleExecutable"})
        if (const auto* name = opened->infoString(key)) addName(identity.names, *name);
    return identity;
}

/// The bundle with every path it was found under.
OwningBundle makeBundle(const BundleIdentity& identity, const Path& place, const std::vector<Path>& foundAs) {
    const bool isReal = std::find(foundAs.begin(), foundAs.end(), place) != foundAs.end();
    OwningBundle bundle = {.url = isReal ? place : foundAs.front(), .place = place};
    bundle.bundleID = identity.bundleID;
    bundle.isApplication = place.lowercasedExtension() == "app" || bundle.url.lowercasedExtension() == "app";
    bundle.isReadable = identity.isReadable;
    bundle.name = identity.name.value_or(bundle.url.stem());
    bundle.foundAs = foundAs;
    // A folder with data may be called like a bundle ("com.example.notes.plugin"): that is its owner's
    // identifier, not its own name.
    const bool isData = !bundle.isApplication && !identity.isReadable && !identity.isDamaged;
    const auto addStem = [&](const Path& path) {
        if (const auto stem = path.stem(); !isData || !hasIdentifierForm(stem)) addName(bundle.names, stem);
    };
    for (const auto& name : foundAs)
        addStem(name);
    addStem(place);
    for (const auto& name : identity.names)
        addName(bundle.names, name);
    return bundle;
}

/// Whether it lies in what a move between disks has on its way. A rest and a half copy are no applications.
/// An original set aside may be whole: it contests nothing, but as long as no recovery has settled it, what
/// it left behind is not without owner.
bool isOnItsWay(const Path& bundle, BundleReach reach) {
    const auto names = bundle.components();
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        const bool isNoItem = isNameOfArrived(name) || name.starts_with(growingCopyPrefix);
        return isNoItem || (reach == BundleReach::usual && nameOnItsWay(name));
    });
}

const Path& applicationsFolder() {
    static const Path folder("/Applications");
    return folder;
}

bool anyWithin(const std::vector<Path>& paths, const Path& folder) {
    return std::any_of(paths.begin(), paths.end(), [&](const Path& path) { return path.isWithin(folder); });
}

void sortOnce(std::vector<Path>& paths) {
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
}

/// Sorts the coverage and determines whether it covers /Applications.
void complete(BundleCoverage& coverage, const FoundBundles& found) {
    coverage.unreadable.insert(coverage.unreadable.end(), found.unreadable.begin(), found.unreadable.end());
    coverage.uncounted.insert(coverage.uncounted.end(), found.uncounted.begin(), found.uncounted.end());
    for (auto* paths : {&coverage.unreadable, &coverage.uncounted, &coverage.damaged})
        sortOnce(*paths);
    const auto& applications = applicationsFolder();
    coverage.seesApplications =
        std::find(found.listed.begin(), found.listed.end(), applications) != found.listed.end()
        && !anyWithin(coverage.unreadable, applications) && !anyWithin(coverage.uncounted, applications);
}

} // namespace

struct BundleSnapshot::LazyContents {
    std::once_flag once;
    std::shared_ptr<const BundleContents> value;
    std::atomic<bool> isRead = false;
};

BundleSnapshot::BundleSnapshot(const FileSystem& files, const CodeSignatures& signatures,
                               std::vector<OwningBundle> bundles, BundleCoverage coverage, BundleReach reach,
                               std::shared_ptr<BundleMemory> memory, const ReadBudget& budget, Opened opened)
    : files_(files),
      signatures_(signatures),
      reach_(reach),
      budget_(budget),
      memory_(memory ? std::move(memory) : std::make_shared<BundleMemory>(false)),
      bundles_(std::move(bundles)),
      coverage_(std::move(coverage)),
      opened_(std::move(opened)),
      contents_(std::make_unique<LazyContents[]>(bundles_.size())) {}

BundleSnapshot::~BundleSnapshot() = default;

const BundleContents& BundleSnapshot::contents(std::size_t index) const {
    return contents(index, {});
}

const BundleContents& BundleSnapshot::contents(std::size_t index, const StopToken& stop) const {
    auto& lazy = contents_[index];
    std::call_once(lazy.once, [&] {
        lazy.value = readContents(bundles_[index].place, stop);
        lazy.isRead = true;
    });
    return *lazy.value;
}

std::shared_ptr<const BundleContents> BundleSnapshot::readContents(const Path& bundle,
                                                                   const StopToken& stop) const {
    if (stop.stopRequested()) return std::make_shared<const BundleContents>();
    const auto read = [&](const FileSystem& files, ReadTrail& trail) {
        const BudgetedSignatures signatures(signatures_, budget_);
        const auto reach =
            reach_ == BundleReach::further ? EmbeddedReach::further : EmbeddedReach::frameworks;
        const TrailedSignatures trailed(signatures, files_, trail);
        const auto opened = opened_.find(bundle);
        return opened != opened_.end() ? readBundleContents(files, trailed, *opened->second, reach, stop)
                                       : readBundleContents(files, trailed, bundle, reach, stop);
    };
    const auto weigh = [](const BundleContents& contents) {
        const auto entries = contents.embeddedIDs.size() + contents.embeddedNames.size()
                             + contents.jobs.size() + contents.groups.size();
        return contents.isComplete ? std::optional(entries) : std::nullopt;
    };
    auto& known = reach_ == BundleReach::further ? memory_->furtherContents : memory_->contents;
    return known.read(bundle, files_, budget_, read, weigh);
}

void BundleSnapshot::readAllContents(const StopToken& stop) const {
    parallelFor(bundles_.size(), [&](std::size_t index) { contents(index, stop); });
}

BundleCoverage BundleSnapshot::coverageWithContents(const std::set<Path>& without) const {
    auto coverage = coverage_;
    for (std::size_t i = 0; i < bundles_.size(); ++i) {
        const auto& bundle = bundles_[i];
        if (!contents_[i].isRead || contents_[i].value->isComplete || without.contains(bundle.place)
            || std::binary_search(coverage_.damaged.begin(), coverage_.damaged.end(), bundle.url))
            continue;
        if (!contents_[i].value->isReadable)
            coverage.unreadable.push_back(bundle.url);
        else if (!bundle.bundleID.empty() || budget_.isExhausted())
            coverage.uncounted.push_back(bundle.url);
    }
    for (auto* paths : {&coverage.unreadable, &coverage.uncounted})
        sortOnce(*paths);
    return coverage;
}

InstalledBundles::InstalledBundles(const FileSystem& files, const CodeSignatures& signatures,
                                   UserEnvironment user, Looks looks, ReadBudget::Limits limits)
    : files_(files),
      signatures_(signatures),
      user_(std::move(user)),
      looks_(looks),
      limits_(limits),
      memory_(std::make_shared<BundleMemory>(looks == Looks::many)) {}

std::shared_ptr<const BundleSnapshot> InstalledBundles::look(Reach reach, const StopToken& stop,
                                                             const std::optional<ReadBudget>& shared) {
    const auto* outer = shared ? &*shared : BudgetedFiles::budgetOf(files_);
    const ReadBudget budget = outer ? *outer : ReadBudget(limits_);
    BundleCoverage coverage;
    auto places = bundlePlaces(BudgetedFiles(files_, budget), user_, coverage.unreadable);
    auto found = searchBundles(files_, budget, *memory_, places, stop);
    std::erase_if(found.names, [&](const auto& bundle) { return isOnItsWay(bundle.first, reach); });
    if (!files_.exists(applicationsFolder())) coverage.absent.push_back(applicationsFolder());

    const std::vector<std::pair<Path, std::vector<Path>>> named(found.names.begin(), found.names.end());
    const auto identities = readIdentities(named, budget, stop);
    std::vector<OwningBundle> bundles;
    BundleSnapshot::Opened opened;
    for (std::size_t i = 0; i < named.size(); ++i) {
        if (!identities[i]) continue;
        if (identities[i]->opened) opened.emplace(named[i].first, identities[i]->opened);
        auto bundle = makeBundle(*identities[i], named[i].first, named[i].second);
        if (identities[i]->isDamaged && budget.isExhausted())
            coverage.uncounted.push_back(bundle.url.parent());
        else if (identities[i]->isDamaged)
            coverage.damaged.push_back(bundle.url);
        if (identities[i]->isThere) bundles.push_back(std::move(bundle));
    }
    std::sort(bundles.begin(), bundles.end(), [](const auto& a, const auto& b) { return a.url < b.url; });
    complete(coverage, found);
    return std::make_shared<const BundleSnapshot>(files_, signatures_, std::move(bundles),
                                                  std::move(coverage), reach, memory_, budget,
                                                  std::move(opened));
}

std::vector<std::shared_ptr<const BundleIdentity>>
InstalledBundles::readIdentities(const std::vector<std::pair<Path, std::vector<Path>>>& bundles,
                                 const ReadBudget& budget, const StopToken& stop) {
    std::vector<std::shared_ptr<const BundleIdentity>> identities(bundles.size());
    const auto weigh = [](const BundleIdentity& identity) { return std::optional(identity.names.size()); };
    parallelFor(bundles.size(), [&](std::size_t i) {
        const auto& place = bundles[i].first;
        const auto read = [&](const FileSystem& files, const ReadTrail&) {
            return readIdentity(files, place, looks_ == Looks::once);
        };
        if (!stop.stopRequested())
            identities[i] = memory_->identities.read(place, files_, budget, read, weigh);
    });

    std::set<Path> places;
    for (const auto& [place, names] : bundles)
        places.insert(places.end(), place);
    memory_->identities.keepOnly(places);
    memory_->contents.keepOnly(places);
    memory_->furtherContents.keepOnly(places);
    return identities;
}

} // namespace tidwen
