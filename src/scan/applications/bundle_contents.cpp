#include "scan/applications/bundle_contents.h"

#include "platform/budgeted_files.h"
#include "scan/bundle.h"

#include <algorithm>

namespace tidwen {
namespace {

void addGroups(std::vector<std::string>& groups, const std::vector<std::string>& declared) {
    for (const auto& group : declared)
        if (std::find(groups.begin(), groups.end(), group) == groups.end()) groups.push_back(group);
}

bool isBudgetSpent(const FileSystem& files) {
    const auto* budget = BudgetedFiles::budgetOf(files);
    return budget && budget->isExhausted();
}

} // namespace

BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Path& bundle, const StopToken& stop) {
    BundleContents contents;
    const auto opened = Bundle::open(files, bundle);
    if (!opened) return contents;
    addGroups(contents.groups, signatures.read(bundle, opened->executable()).applicationGroups);
    auto embedded = findEmbeddedBundles(files, *opened, stop, [&](const Bundle& inner) {
        addGroups(contents.groups, signatures.read(inner.root, inner.executable()).applicationGroups);
    });
    contents.embeddedIDs = std::move(embedded.identifiers);
    for (const bool isSystemDomain : {false, true}) {
        const Path folder =
            bundle / (isSystemDomain ? "Contents/Library/LaunchDaemons" : "Contents/Library/LaunchAgents");
        for (auto& job : listLaunchItems(files, folder, isSystemDomain, stop))
            contents.jobs.push_back(std::move(job));
    }
    // A bundle that was taken away in the middle may hold more than was seen.
    contents.isComplete = embedded.isComplete && opened->identifier() && !stop.stopRequested()
                          && files.exists(opened->contents / "Info.plist") && !isBudgetSpent(files);
    return contents;
}

} // namespace tidwen
