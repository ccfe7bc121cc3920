#include "base/text.h"
#include "scan/bundle.h"
#include "scan/bundle_names.h"
#include "scan/file_absence.h"
#include "scan/shared_names.h"

#include <set>
#include <string_view>

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

// Frameworks are shared by many applications.
bool isOwnBundle(const Path& item) {
    return isBundleName(item.lastComponent()) && item.lowercasedExtension() != "framework";
}

bool isApplication(const Path& item) {
    return item.lowercasedExtension() == "app";
}

class EmbeddedSearch {
  public:
    EmbeddedSearch(const FileSystem& files, const StopToken& stop,
                   const std::function<void(const Bundle&)>& onBundle)
        : files_(files), stop_(stop), onBundle_(onBundle) {}

    void searchInside(const Bundle& bundle, int depth) {
        addPrivilegedTools(bundle);
        if (depth == maximumDepth) return;
        // Most bundles have two or three of the places; one look tells which need no look of their own.
        const auto there = namesIn(bundle.contents);
        for (const auto place : places)
            if (there.contains(lowercased(place.substr(0, place.find('/')))))
                searchFolder(bundle.contents / place, isOwnBundle, depth);
        // Helpers of browser engines lie beside the frameworks that start them.
        if (there.contains("frameworks")) searchFolder(bundle.contents / "Frameworks", isApplication, depth);
    }

    EmbeddedBundles found() const {
        return {{found_.begin(), found_.end()}, isComplete_ && isReadable_, isReadable_};
    }

  private:
    /// In lower case, as most Mac disks compare them.
    std::set<std::string> namesIn(const Path& folder) {
        std::set<std::string> names;
        for (const auto& entry : list(folder))
            names.insert(lowercased(entry.name));
        return names;
    }

    std::vector<DirectoryEntry> list(const Path& folder) {
        auto entries = files_.list(folder);
        if (!entries && !isAbsence(entries.error())) isReadable_ = false;
        return entries ? std::move(*entries) : std::vector<DirectoryEntry>();
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
        if (!identifier.empty() && !isApplesIdentifier(lowercased(identifier))) found_.insert(identifier);
    }

    const FileSystem& files_;
    const StopToken& stop_;
    const std::function<void(const Bundle&)>& onBundle_;
    int bundlesLeft_ = maximumBundles;
    bool isComplete_ = true;
    bool isReadable_ = true;
    std::set<std::string> found_;
};

} // namespace

EmbeddedBundles findEmbeddedBundles(const FileSystem& files, const Bundle& bundle, const StopToken& stop,
                                    const std::function<void(const Bundle&)>& onBundle) {
    EmbeddedSearch search(files, stop, onBundle);
    search.searchInside(bundle, 0);
    return search.found();
}

std::vector<std::string> embeddedBundleIDs(const FileSystem& files, const Path& bundle,
                                           const StopToken& stop) {
    const auto opened = Bundle::open(files, bundle);
    return opened ? findEmbeddedBundles(files, *opened, stop).identifiers : std::vector<std::string>();
}

} // namespace tidwen
