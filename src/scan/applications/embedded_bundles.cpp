#include "base/path.h"
#include "base/stop_token.h"
#include "base/text.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/shared_names.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

// An application in a helper in an application is the greatest depth in practice; the count prevents a bundle
// with thousands of nested ones from delaying a scan.
constexpr int maximumDepth = 6;
constexpr int maximumBundles = 2'000;

// Unusual places: "Contents/SharedSupport/Tools/Extras/Tool.app". Resources have many, deeper folders without
// bundles.
constexpr int furtherLevels = 4;
constexpr int furtherLevelsOfResources = 3;
constexpr int maximumFurtherFolders = 1'000;
constexpr std::size_t mostKept = 1'000; // entries of a folder
constexpr std::size_t mostLinkedPlaces = 100;

// Where macOS, build tools and convention put bundles, below "Contents".
constexpr std::string_view usualPlaces[] = {
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

/// A folder that by its name contains texts, headers or hashes.
bool holdsNoBundles(std::string_view name) {
    static constexpr std::string_view names[] = {"Headers", "PrivateHeaders", "Modules", "_CodeSignature"};
    return name.ends_with(".lproj") || std::find(std::begin(names), std::end(names), name) != std::end(names);
}

class EmbeddedSearch {
  public:
    EmbeddedSearch(const FileSystem& files, EmbeddedReach reach, const StopToken& stop,
                   const std::function<void(const Bundle&)>& onBundle)
        : files_(files), reach_(reach), stop_(stop), onBundle_(onBundle) {}

    void searchInside(const Bundle& bundle, int depth) {
        if (depth == 0) root_ = bundle.root;
        addPrivilegedTools(bundle);
        if (depth == maximumDepth) return;
        searchPlaces(bundle.contents, namesIn(bundle.contents), depth);
        if (reach_ == EmbeddedReach::further) searchFurther(bundle.root, depth);
    }

    EmbeddedBundles found() const {
        return {{found_.begin(), found_.end()},
                {inFrameworks_.begin(), inFrameworks_.end()},
                linkedPlaces_,
                isComplete_ && isReadable_,
                isReadable_};
    }

  private:
    /// In lower case, as most Mac disks compare them → as written.
    using Names = std::map<std::string, std::string, std::less<>>;

    Names namesIn(const Path& folder, bool withLinks = true) {
        Names names;
        for (const auto& entry : list(folder))
            if (withLinks || entry.kind != FileKind::symbolicLink)
                names.emplace(lowercased(entry.name), entry.name);
        return names;
    }

    /// Its folders and links. Listed once, although a search further in looks at the usual places again.
    std::vector<DirectoryEntry> list(const Path& folder) {
        if (const auto known = listed_.find(folder); known != listed_.end()) return known->second;
        auto entries = files_.list(folder);
        if (!entries && !isAbsence(entries.error())) noteUnreadable();
        if (!entries) return {};
        std::erase_if(*entries, [](const DirectoryEntry& entry) {
            return entry.kind != FileKind::directory && entry.kind != FileKind::symbolicLink;
        });
        if (reach_ == EmbeddedReach::further && entries->size() <= mostKept) listed_[folder] = *entries;
        return std::move(*entries);
    }

    void noteUnreadable() { isReadable_ = isReadable_ && isFurther_; }

    /// Most bundles have two or three of these places; the listing shows which need not be opened.
    void searchPlaces(const Path& contents, const Names& there, int depth) {
        for (const auto place : usualPlaces) {
            const auto slash = std::min(place.find('/'), place.size());
            if (const auto first = there.find(lowercased(place.substr(0, slash))); first != there.end())
                searchFolder(Path((contents / first->second).string() + std::string(place.substr(slash))),
                             isOwnBundle, depth);
        }
        if (const auto library = there.find("library"); library != there.end())
            addInstalledTools(contents / library->second / "LaunchServices");
        const auto frameworks = there.find("frameworks");
        if (frameworks == there.end()) return;
        // Helpers of browser engines are beside the frameworks that start them, or in these.
        searchFolder(contents / frameworks->second, isApplication, depth);
        if (reach_ != EmbeddedReach::own) searchFrameworks(contents / frameworks->second, depth + 1);
    }

    void searchFrameworks(const Path& folder, int depth) {
        if (depth == maximumDepth) return;
        const bool wasInside = std::exchange(isInFramework_, true);
        for (const auto& [lower, name] : namesIn(folder, false))
            if (isFramework(folder / name) && mayLookAtOneMore()) searchFramework(folder / name, depth);
        isInFramework_ = wasInside;
    }

    /// Its contents are in its versions; the names beside them are links into the current one.
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
            if (entry.kind == FileKind::symbolicLink) noteLink(folder / entry.name);
            if (entry.kind != FileKind::directory) continue;
            const Path inner = folder / entry.name;
            if (!isWanted(inner)) continue;
            if (!mayLookAtOneMore()) return;
            lookAt(inner, depth);
        }
    }

    /// A program or a framework may lie elsewhere, perhaps in the data of another application.
    void noteLink(const Path& link) {
        if (reach_ == EmbeddedReach::own || linkedPlaces_.size() == mostLinkedPlaces) return;
        const auto place = files_.resolve(link);
        if (place && !place->isWithinIgnoringCase(root_)) linkedPlaces_.push_back(*place);
    }

    void lookAt(const Path& inner, int depth) {
        if (reach_ == EmbeddedReach::further && !seen_.insert(inner).second) return;
        const auto bundle = Bundle::open(files_, inner);
        if (bundle ? bundle->isDamaged : mayBeThere(files_, inner)) noteUnreadable();
        if (!bundle) return;
        if (const auto identifier = bundle->identifier()) add(*identifier);
        if (onBundle_) onBundle_(*bundle);
        searchInside(*bundle, depth + 1);
    }

    /// Everything in the folders of a bundle or framework, whatever their names, level by level.
    void searchFurther(const Path& root, int depth) {
        const bool wasFurther = std::exchange(isFurther_, true);
        std::vector<FurtherFolder> level = {{root, furtherLevels}};
        while (!level.empty()) {
            std::vector<FurtherFolder> below;
            for (const auto& folder : level)
                if (mayListOneMore()) searchFurtherIn(folder, depth, below);
            level = std::move(below);
        }
        isFurther_ = wasFurther;
    }

    struct FurtherFolder {
        Path path;
        int levelsLeft;
    };

    void searchFurtherIn(const FurtherFolder& folder, int depth, std::vector<FurtherFolder>& below) {
        const bool isResources = lowercased(folder.path.lastComponent()) == "resources";
        const int levelsLeft =
            isResources ? std::min(folder.levelsLeft, furtherLevelsOfResources) : folder.levelsLeft;
        for (const auto& entry : list(folder.path)) {
            if (entry.kind != FileKind::directory || holdsNoBundles(entry.name)) continue;
            const Path inner = folder.path / entry.name;
            if (isFramework(inner) && depth + 1 < maximumDepth)
                searchFurtherFramework(inner, depth + 1);
            else if (isOwnBundle(inner) && mayLookAtOneMore())
                lookAt(inner, depth);
            else if (levelsLeft > 0 && !isBundleName(entry.name))
                below.push_back({inner, levelsLeft - 1});
        }
    }

    void searchFurtherFramework(const Path& framework, int depth) {
        const bool wasInside = std::exchange(isInFramework_, true);
        searchFurther(framework, depth);
        isInFramework_ = wasInside;
    }

    bool mayListOneMore() {
        return !stop_.stopRequested() && furtherFoldersLeft_ > 0 && furtherFoldersLeft_-- > 0;
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

    /// Privileged tools lie here under the identifiers under which they are installed, named in the
    /// Info.plist or not: older ones are installed by other means.
    void addInstalledTools(const Path& folder) {
        const auto entries = files_.list(folder);
        if (!entries && !isAbsence(entries.error())) noteUnreadable();
        if (!entries) return;
        for (const auto& entry : *entries)
            if (entry.kind == FileKind::regular && isIdentifier(entry.name) && mayLookAtOneMore())
                add(entry.name);
    }

    bool mayLookAtOneMore() {
        if (!stop_.stopRequested() && bundlesLeft_ > 0) return --bundlesLeft_, true;
        isComplete_ = isComplete_ && isFurther_ && !stop_.stopRequested();
        return false;
    }

    void add(const std::string& identifier) {
        if (!identifier.empty() && !isApplesIdentifier(lowercased(identifier)))
            (isInFramework_ ? inFrameworks_ : found_).insert(identifier);
    }

    const FileSystem& files_;
    const EmbeddedReach reach_;
    const StopToken& stop_;
    const std::function<void(const Bundle&)>& onBundle_;
    int bundlesLeft_ = maximumBundles;
    bool isComplete_ = true;
    bool isReadable_ = true;
    bool isInFramework_ = false;
    bool isFurther_ = false; ///< unreadable parts are not reported
    std::map<Path, std::vector<DirectoryEntry>> listed_;
    int furtherFoldersLeft_ = maximumFurtherFolders;
    std::set<Path> seen_; ///< bundles, because several paths lead to them
    Path root_;           ///< of the outermost
    std::vector<Path> linkedPlaces_;
    std::set<std::string> found_;
    std::set<std::string> inFrameworks_;
};

} // namespace

EmbeddedBundles findEmbeddedBundles(const FileSystem& files, const Bundle& bundle, EmbeddedReach reach,
                                    const StopToken& stop,
                                    const std::function<void(const Bundle&)>& onBundle) {
    EmbeddedSearch search(files, reach, stop, onBundle);
    search.searchInside(bundle, 0);
    return search.found();
}

std::vector<std::string> embeddedBundleIDs(const FileSystem& files, const Path& bundle,
                                           const StopToken& stop) {
    const auto opened = Bundle::open(files, bundle);
    return opened ? findEmbeddedBundles(files, *opened, EmbeddedReach::own, stop).identifiers
                  : std::vector<std::string>();
}

} // namespace tidwen
