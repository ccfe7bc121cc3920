#include "scan/applications/bundle_search.h"

#include "base/parallel.h"
#include "scan/bundle_names.h"

#include <set>

namespace tidwen {
namespace {

// Far beyond any Mac; they end the search of a disk that was made to have no end.
constexpr std::size_t maximumBundles = 5'000;
constexpr int maximumFoldersOfPlace = 2'000;
constexpr int maximumFolders = 20'000;
constexpr int maximumLinks = 2'000;

class BundleSearch {
  public:
    BundleSearch(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                 const std::vector<BundlePlace>& places, const StopToken& stop)
        : files_(files),
          budget_(budget),
          memory_(memory),
          places_(places),
          stop_(stop),
          foldersLeft_(places.size(), maximumFoldersOfPlace) {}

    FoundBundles run() {
        std::vector<Folder> level;
        for (std::size_t i = 0; i < places_.size(); ++i)
            level.push_back({places_[i].folder, {}, i, places_[i].depth});
        while (!level.empty())
            level = searchLevel(std::move(level));
        found_.uncounted.assign(uncounted_.begin(), uncounted_.end());
        memory_.folders.keepOnly(listed_);
        return std::move(found_);
    }

  private:
    using Entries = FileResult<std::vector<DirectoryEntry>>;

    struct Folder {
        Path path;
        Path realPath; ///< the same without links; empty name ("/") while it is not known
        std::size_t place;
        int depthLeft;
        bool isSearched = false;
        std::shared_ptr<const Entries> entries = {}; ///< null when it was not searched
    };

    std::vector<Folder> searchLevel(std::vector<Folder> level) {
        for (auto& folder : level)
            folder.isSearched = mayListOneMore(folder);
        parallelFor(level.size(), [&](std::size_t i) {
            auto& folder = level[i];
            if (!folder.isSearched || stop_.stopRequested()) return;
            folder.entries = list(folder.path);
            if (*folder.entries && folder.realPath.isRoot())
                folder.realPath = files_.resolve(folder.path).value_or(folder.path);
        });
        std::vector<Folder> below;
        for (const auto& folder : level) {
            if (stop_.stopRequested())
                uncounted_.insert(places_[folder.place].folder);
            else if (folder.entries)
                lookThrough(folder, below);
        }
        return below;
    }

    /// The folders and links in it.
    std::shared_ptr<const Entries> list(const Path& folder) const {
        const auto read = [&](const FileSystem& files, const ReadTrail&) {
            auto entries = files.list(folder);
            if (entries)
                std::erase_if(*entries, [](const auto& entry) {
                    return (entry.kind != FileKind::directory && entry.kind != FileKind::symbolicLink)
                           || !isValidUtf8(entry.name);
                });
            return entries;
        };
        const auto weigh = [](const Entries& entries) {
            return entries ? std::optional(entries->size()) : std::nullopt;
        };
        return memory_.folders.read(folder, files_, budget_, read, weigh);
    }

    bool mayListOneMore(const Folder& folder) {
        auto& left = foldersLeft_[folder.place];
        if (left > 0 && allFoldersLeft_ > 0) return --left, --allFoldersLeft_, true;
        uncounted_.insert(places_[folder.place].folder);
        return false;
    }

    void lookThrough(const Folder& folder, std::vector<Folder>& below) {
        if (!*folder.entries) return noteUnreadable(folder);
        listed_.insert(folder.path);
        // By a link, or because one place lies in another, a folder may come up again.
        const auto [known, isNew] = depths_.emplace(folder.realPath, folder.depthLeft);
        if (folder.depthLeft == places_[folder.place].depth) found_.listed.push_back(folder.path);
        if (!isNew && known->second >= folder.depthLeft) return;
        known->second = folder.depthLeft;

        for (const auto& entry : **folder.entries) {
            const Path item = folder.path / entry.name;
            if (isBundleName(entry.name))
                addBundle(folder, entry, item);
            else if (folder.depthLeft > 0)
                addFolder(folder, entry, item, below);
        }
    }

    void noteUnreadable(const Folder& folder) {
        const auto fault = folder.entries->error().fault;
        if (fault == FileFault::exhausted) {
            uncounted_.insert(places_[folder.place].folder);
            return;
        }
        const bool isNone = fault == FileFault::missing || fault == FileFault::notDirectory;
        if (!isNone && !places_[folder.place].isOptional) found_.unreadable.push_back(folder.path);
    }

    void addBundle(const Folder& folder, const DirectoryEntry& entry, const Path& item) {
        Path real = folder.realPath / entry.name;
        if (entry.kind == FileKind::symbolicLink) {
            auto followed = followLink(folder, item);
            if (!followed) return;
            real = std::move(*followed);
        } else if (entry.kind != FileKind::directory) {
            return;
        }
        if (found_.names.size() >= maximumBundles && !found_.names.contains(real)) {
            uncounted_.insert(places_[folder.place].folder);
            return;
        }
        found_.names[real].push_back(item);
    }

    void addFolder(const Folder& folder, const DirectoryEntry& entry, const Path& item,
                   std::vector<Folder>& below) {
        if (entry.kind == FileKind::directory)
            below.push_back({item, folder.realPath / entry.name, folder.place, folder.depthLeft - 1});
        if (entry.kind != FileKind::symbolicLink || !places_[folder.place].followsFolders) return;
        if (auto real = followLink(folder, item))
            below.push_back({item, std::move(*real), folder.place, folder.depthLeft - 1});
    }

    /// Where the link leads; nothing when it leads to no folder.
    std::optional<Path> followLink(const Folder& folder, const Path& link) {
        if (linksLeft_ == 0) {
            uncounted_.insert(places_[folder.place].folder);
            return std::nullopt;
        }
        --linksLeft_;
        auto real = files_.resolve(link);
        // An application on a disk that is away still owns what is here.
        if (!real && places_[folder.place].followsFolders && link.lowercasedExtension() == "app")
            found_.unreadable.push_back(link);
        if (!real || !files_.isDirectoryFollowingLinks(*real)) return std::nullopt;
        return std::move(*real);
    }

    const FileSystem& files_;
    const ReadBudget& budget_;
    BundleMemory& memory_;
    const std::vector<BundlePlace>& places_;
    const StopToken& stop_;
    std::vector<int> foldersLeft_; ///< of each place
    int allFoldersLeft_ = maximumFolders;
    int linksLeft_ = maximumLinks;
    std::map<Path, int> depths_; ///< real folder → how deep below it was searched
    std::set<Path> listed_;
    std::set<Path> uncounted_;
    FoundBundles found_;
};

} // namespace

FoundBundles searchBundles(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                           const std::vector<BundlePlace>& places, const StopToken& stop) {
    return BundleSearch(files, budget, memory, places, stop).run();
}

} // namespace tidwen
