#include "inventory/installed_applications.h"

#include "base/parallel.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "platform/file_absence.h"
#include "scan/applications/bundle.h"

#include <algorithm>
#include <optional>
#include <set>

namespace tidwen {
namespace {

// Installers go no deeper than "/Applications/Maker/Suite/Tool.app".
constexpr int subfolderDepth = 2;

// Far above any real Mac; they end the search of an endless disk.
constexpr std::size_t maximumBundles = 5'000;
constexpr int maximumFolders = 5'000;

class BundleSearch {
  public:
    explicit BundleSearch(const FileSystem& files) : files_(files) {}

    void searchFolder(const Path& folder, int depthLeft) {
        if (foldersLeft_ <= 0) {
            ++missed_.leftOut;
            return;
        }
        --foldersLeft_;
        const auto entries = files_.list(folder);
        if (!entries) {
            if (!isAbsence(entries.error())) missed_.unreadable.push_back(folder);
            return;
        }
        for (const auto& entry : *entries) {
            if (!isValidUtf8(entry.name)) continue;
            const Path item = folder / entry.name;
            // A link to an application does not count: removing it would remove only the link.
            if (entry.kind != FileKind::directory || entry.name.starts_with('.')) continue;
            if (item.lowercasedExtension() == "app") {
                if (found_.size() < maximumBundles)
                    found_.insert(item);
                else
                    ++missed_.leftOut;
            } else if (depthLeft > 0) {
                searchFolder(item, depthLeft - 1);
            }
        }
    }

    std::vector<Path> found() const { return {found_.begin(), found_.end()}; }
    const MissedApplications& missed() const { return missed_; }

  private:
    const FileSystem& files_;
    int foldersLeft_ = maximumFolders;
    std::set<Path> found_;
    MissedApplications missed_;
};

/// The results of `read` for each bundle, in order, without the empty ones.
template<class Value, class Read>
std::vector<Value> readInParallel(const std::vector<Path>& bundles, const Read& read) {
    std::vector<std::optional<Value>> answers(bundles.size());
    parallelFor(bundles.size(), [&](std::size_t index) { answers[index] = read(bundles[index]); });
    std::vector<Value> values;
    for (auto& answer : answers)
        if (answer) values.push_back(std::move(*answer));
    return values;
}

} // namespace

std::vector<Path> findApplicationBundles(const FileSystem& files, const UserEnvironment& user,
                                         MissedApplications* missed) {
    BundleSearch search(files);
    search.searchFolder(Path("/Applications"), subfolderDepth);
    search.searchFolder(user.home / "Applications", subfolderDepth);
    if (missed) *missed = search.missed();
    return search.found();
}

std::vector<InstalledIdentity> readIdentities(const FileSystem& files, const std::vector<Path>& bundles) {
    const BudgetedFiles budgeted(files);
    return readInParallel<InstalledIdentity>(
        bundles, [&](const Path& url) -> std::optional<InstalledIdentity> {
            const auto bundle = Bundle::open(budgeted, url);
            auto identifier = bundle ? bundle->identifier() : std::nullopt;
            if (!identifier) return std::nullopt;
            return InstalledIdentity{.url = url, .bundleID = std::move(*identifier), .name = bundle->name()};
        });
}

std::vector<InstalledIdentity> identitiesOf(const BundleSnapshot& snapshot,
                                            const std::vector<Path>& bundles) {
    std::vector<InstalledIdentity> identities;
    for (const auto& bundle : snapshot.bundles()) // both are sorted by path
        if (!bundle.bundleID.empty() && std::binary_search(bundles.begin(), bundles.end(), bundle.url))
            identities.push_back({bundle.url, bundle.bundleID, bundle.name});
    return identities;
}

std::vector<InstalledApp> listInstalledApps(const FileSystem& files, const CodeSignatures& signatures,
                                            const std::vector<Path>& bundles) {
    const BudgetedFiles budgeted(files);
    const BudgetedSignatures budgetedSignatures(signatures, budgeted.budget());
    auto apps = readInParallel<InstalledApp>(
        bundles, [&](const Path& url) { return makeInstalledApp(budgeted, budgetedSignatures, url); });
    std::stable_sort(apps.begin(), apps.end(),
                     [](const auto& a, const auto& b) { return compareForDisplay(a.name, b.name) < 0; });
    return apps;
}

} // namespace tidwen
