#include "base/text.h"
#include "platform/file_absence.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"
#include "scan/matching/shared_names.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace tidwen {
namespace {

// An application inside a helper inside an application is as deep as it gets in practice; the count keeps a
// bundle that was made to hold thousands of others from holding up a scan.
constexpr int maximumDepth = 6;
constexpr int maximumBundles = 2'000;

// Where macOS, the build tools and habit put bundles, below "Contents".
constexpr std::string_view places[] = {
    "Applications",
    "Extensions",
    "Helpers",
    "Library/Application Support",
    "Library/Helpers",
    "Library/LoginItems",
    "Library/QuickLook",
    "Library/Spotlight",
    "Library/SystemExtensions",
    "MacOS",
    "PlugIns",
    "Resources",
    "SharedSupport",
    "XPCServices",
};

bool isFramework(const Path& item) {
    return item.lowercasedExtension() == "framework";
}

bool isOwnBundle(const Path& item) {
    return isBundleName(item.lastComponent()) && !isFramework(item);
}

bool isApplication(const Path& item) {
    return item.lowercasedExtension() == "app";
}

class EmbeddedSearch {
  public:
    EmbeddedSearch(const FileSystem& files, Frameworks frameworks, const StopToken& stop,
                   const std::function<void(const Bundle&)>& onBundle)
        : files_(files), frameworks_(frameworks), stop_(stop), onBundle_(onBundle) {}

    void searchInside(const Bundle& bundle, int depth) {
        addPrivilegedTools(bundle);
        if (depth < maximumDepth) searchPlaces(bundle.contents, namesIn(bundle.contents), depth);
    }

    EmbeddedBundles found() const {
        return {{found_.begin(), found_.end()},
                {inFrameworks_.begin(), inFrameworks_.end()},
                isComplete_ && isReadable_,
                isReadable_};
    }

  private:
    /// In lower case, as most Mac disks compare them → as they are written.
    using Names = std::map<std::string, std::string, std::less<>>;

    Names namesIn(const Path& folder, bool withLinks = true) {
        Names names;
        for (const auto& entry : list(folder))
            if (withLinks || entry.kind != FileKind::symbolicLink)
                names.emplace(lowercased(entry.name), entry.name);
        return names;
    }

    std::vector<DirectoryEntry> list(const Path& folder) {
        auto entries = files_.list(folder);
        if (!entries && !isAbsence(entries.error())) isReadable_ = false;
        return entries ? std::move(*entries) : std::vector<DirectoryEntry>();
    }

    /// Most bundles have two or three of the places; the names that are there tell which need no look of
    /// their own.
    void searchPlaces(const Path& contents, const Names& there, int depth) {
        for (const auto place : places) {
            const auto slash = std::min(place.find('/'), place.size());
            if (const auto first = there.find(lowercased(place.substr(0, slash))); first != there.end())
                searchFolder(Path((contents / first->second).string() + std::string(place.substr(slash))),
                             isOwnBundle, depth);
        }
        const auto frameworks = there.find("frameworks");
        if (frameworks == there.end()) return;
        // Helpers of browser engines lie beside the frameworks that start them, or in these.
        searchFolder(contents / frameworks->second, isApplication, depth);
        if (frameworks_ == Frameworks::entered) searchFrameworks(contents / frameworks->second, depth + 1);
    }

    void searchFrameworks(const Path& folder, int depth) {
        if (depth == maximumDepth) return;
        const bool wasInside = std::exchange(isInFramework_, true);
        for (const auto& [lower, name] : namesIn(folder, false))
            if (isFramework(folder / name) && mayLookAtOneMore()) searchFramework(folder / name, depth);
        isInFramework_ = wasInside;
    }

    /// Its versions hold what it has; the names beside them are links to those of the current one.
    void searchFramework(const Path& framework, int depth) {
        const auto there = namesIn(framework, false);
        searchPlaces(framework, there, depth);
        const auto versions = there.find("versions");
        if (versions == there.end()) return;
        const Path folder = framework / versions->second;
        for (const auto& [lower, name] : namesIn(folder, false))
            if (mayLookAtOneMore()) searchPlaces(folder / name, namesIn(folder / name), depth);
    }

    void searchFolder(const Path& folder, bool (*isWanted)(const Path&), int depth) {
        for (const auto& entry : list(folder)) {
            const Path inner = folder / entry.name;
            if (entry.kind != FileKind::directory || !isWanted(inner)) continue;
            if (!mayLookAtOneMore()) return;
            const auto bundle = Bundle::open(files_, inner);
            if (bundle ? bundle->isDamaged : mayBeThere(files_, inner)) isReadable_ = false;
            if (!bundle) continue;
            if (const auto identifier = bundle->identifier()) add(*identifier);
            if (onBundle_) onBundle_(*bundle);
            searchInside(*bundle, depth + 1);
        }
    }

    /// Tools that the application installs in "/Library/PrivilegedHelperTools" under these names.
    void addPrivilegedTools(const Bundle& bundle) {
        if (!bundle.info) return;
        const auto found = bundle.info->find("SMPrivilegedExecutables");
        const auto* tools = found == bundle.info->end() ? nullptr : found->second.asDictionary();
        if (!tools) return;
        for (const auto& [identifier, requirement] : *tools)
            if (mayLookAtOneMore()) add(identifier);
    }

    bool mayLookAtOneMore() {
        if (!stop_.stopRequested() && bundlesLeft_ > 0) return --bundlesLeft_, true;
        isComplete_ = false;
        return false;
    }

    void add(const std::string& identifier) {
        if (!identifier.empty() && !isApplesIdentifier(lowercased(identifier)))
            (isInFramework_ ? inFrameworks_ : found_).insert(identifier);
    }

    const FileSystem& files_;
    const Frameworks frameworks_;
    const StopToken& stop_;
    const std::function<void(const Bundle&)>& onBundle_;
    int bundlesLeft_ = maximumBundles;
    bool isComplete_ = true;
    bool isReadable_ = true;
    bool isInFramework_ = false;
    std::set<std::string> found_;
    std::set<std::string> inFrameworks_;
};

} // namespace

EmbeddedBundles findEmbeddedBundles(const FileSystem& files, const Bundle& bundle, Frameworks frameworks,
                                    const StopToken& stop,
                                    const std::function<void(const Bundle&)>& onBundle) {
    EmbeddedSearch search(files, frameworks, stop, onBundle);
    search.searchInside(bundle, 0);
    return search.found();
}

std::vector<std::string> embeddedBundleIDs(const FileSystem& files, const Path& bundle,
                                           const StopToken& stop) {
    const auto opened = Bundle::open(files, bundle);
    return opened ? findEmbeddedBundles(files, *opened, Frameworks::leftOut, stop).identifiers
                  : std::vector<std::string>();
}

} // namespace tidwen
