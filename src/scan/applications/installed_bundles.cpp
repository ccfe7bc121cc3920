#include "scan/applications/installed_bundles.h"

#include "base/parallel.h"
#include "scan/applications/bundle_contents.h"
#include "scan/applications/bundle_search.h"
#include "scan/bundle.h"

#include <algorithm>
#include <mutex>

namespace tidwen {
namespace {

void addName(std::vector<std::string>& names, std::string name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(std::move(name));
}

struct ReadBundle {
    OwningBundle bundle;
    bool isThere = false;
    bool isDamaged = false;
};

ReadBundle readBundle(const FileSystem& files, const Path& place, const std::vector<Path>& foundAs) {
    const bool isReal = std::find(foundAs.begin(), foundAs.end(), place) != foundAs.end();
    ReadBundle read = {.bundle = {.url = isReal ? place : foundAs.front(), .place = place}};
    auto& bundle = read.bundle;
    bundle.isApplication = place.lowercasedExtension() == "app" || bundle.url.lowercasedExtension() == "app";
    bundle.name = bundle.url.stem();
    for (const auto& name : foundAs)
        addName(bundle.names, name.stem());
    addName(bundle.names, place.stem());

    const auto opened = Bundle::open(files, place);
    if (!opened) return read;
    read.isThere = true;
    bundle.isReadable = opened->info.has_value();
    read.isDamaged = !bundle.isReadable && files.exists(opened->contents / "Info.plist");
    if (!bundle.isReadable) return read;
    bundle.bundleID = opened->identifier().value_or("");
    if (auto name = opened->name(); !name.empty()) bundle.name = std::move(name);
    for (const auto* key : {"CFBundleName", "CFBundleDisplayName", "CFBundleExecutable"})
        if (const auto* name = opened->infoString(key)) addName(bundle.names, *name);
    return read;
}

bool anyWithin(const std::vector<Path>& paths, const Path& folder) {
    return std::any_of(paths.begin(), paths.end(), [&](const Path& path) { return path.isWithin(folder); });
}

} // namespace

struct BundleSnapshot::LazyContents {
    std::once_flag once;
    BundleContents value;
};

BundleSnapshot::BundleSnapshot(const FileSystem& files, const CodeSignatures& signatures,
                               std::vector<OwningBundle> bundles, BundleCoverage coverage)
    : files_(files),
      signatures_(signatures),
      bundles_(std::move(bundles)),
      coverage_(std::move(coverage)),
      contents_(std::make_unique<LazyContents[]>(bundles_.size())) {}

BundleSnapshot::~BundleSnapshot() = default;

const BundleContents& BundleSnapshot::contents(std::size_t index) const {
    return contents(index, {});
}

const BundleContents& BundleSnapshot::contents(std::size_t index, const StopToken& stop) const {
    auto& lazy = contents_[index];
    std::call_once(lazy.once, [&] {
        if (!stop.stopRequested())
            lazy.value = readBundleContents(files_, signatures_, bundles_[index].place, stop);
    });
    return lazy.value;
}

void BundleSnapshot::readAllContents(const StopToken& stop) const {
    parallelFor(bundles_.size(), [&](std::size_t index) { contents(index, stop); });
}

std::shared_ptr<const BundleSnapshot> InstalledBundles::look(const StopToken& stop) {
    BundleCoverage coverage;
    const auto places = bundlePlaces(files_, user_, coverage.unreadable);
    auto found = searchBundles(files_, places, stop);
    const std::vector<std::pair<Path, std::vector<Path>>> named(found.names.begin(), found.names.end());

    std::vector<ReadBundle> read(named.size());
    parallelFor(named.size(), [&](std::size_t i) {
        if (!stop.stopRequested()) read[i] = readBundle(files_, named[i].first, named[i].second);
    });
    std::vector<OwningBundle> bundles;
    for (auto& each : read) {
        if (each.isDamaged) coverage.damaged.push_back(each.bundle.url);
        if (each.isThere) bundles.push_back(std::move(each.bundle));
    }
    std::sort(bundles.begin(), bundles.end(), [](const auto& a, const auto& b) { return a.url < b.url; });

    for (auto& folder : found.unreadable)
        coverage.unreadable.push_back(std::move(folder));
    coverage.uncounted = std::move(found.uncounted);
    for (auto* paths : {&coverage.unreadable, &coverage.uncounted, &coverage.damaged})
        std::sort(paths->begin(), paths->end());
    const Path applications("/Applications");
    coverage.seesApplications =
        std::find(found.listed.begin(), found.listed.end(), applications) != found.listed.end()
        && !anyWithin(coverage.unreadable, applications) && !anyWithin(coverage.uncounted, applications);
    return std::make_shared<const BundleSnapshot>(files_, signatures_, std::move(bundles),
                                                  std::move(coverage));
}

} // namespace tidwen
