#include "scan/applications/bundle_search.h"

#include "base/parallel.h"
#include "base/path.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/read_budget.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/job_program.h"
#include "scan/applications/read_trail.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace tidwen {
namespace {

// Far above any real Mac; they end the search of an endless disk.
constexpr std::size_t maximumBundles = 5'000;
constexpr int maximumFoldersOfPlace = 2'000;
constexpr int maximumFolders = 20'000;
constexpr int maximumLinks = 2'000;
// Of the levels whose gaps are not reported; they must not use up what the others need.
constexpr int maximumFurtherFoldersOfPlace = 3'000;
constexpr int maximumFurtherFolders = 12'000;

class BundleSearch {
  public:
    BundleSearch(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                 const std::vector<BundlePlace>& places, const StopToken& stop)
        : files_(files),
          budget_(budget),
          memory_(memory),
          places_(places),
          stop_(stop),
          budgets_(places.size()) {}

    FoundBundles run() {
        std::vector<Folder> level;
        for (std::size_t i = 0; i < places_.size(); ++i)
            level.push_back({places_[i].folder, {}, i, places_[i].depth + places_[i].furtherDepth});
        while (!level.empty())
            level = searchLevel(std::move(level));
        found_.uncounted.assign(uncounted_.begin(), uncounted_.end());
        memory_.folders.keepOnly(listed_);
        found_.unreadable.insert(found_.unreadable.end(), ways_.begin(), ways_.end());
        return std::move(found_);
    }

  private:
    using Entries = FileResult<std::vector<DirectoryEntry>>;

    struct Folder {
        Path path;
        Path realPath; ///< the same without links; empty name ("/") while unknown
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

    /// Its folders and links.
    std::shared_ptr<const Entries> list(const Path& folder) const {
        const auto read = [&](const FileSystem& files, const ReadTrail&) {
            auto entries = files.list(folder);
            if (entries)
                std::erase_if(*entries, [](const auto& entry) {
                    return entry.kind != FileKind::directory && entry.kind != FileKind::symbolicLink;
                });
            return entries;
        };
        const auto weigh = [](const Entries& entries) {
            return entries ? std::optional(entries->size()) : std::nullopt;
        };
        return memory_.folders.read(folder, files_, budget_, read, weigh);
    }

    int levelOf(const Folder& folder) const {
        const auto& place = places_[folder.place];
        return place.depth + place.furtherDepth - folder.depthLeft;
    }
    bool isFurther(const Folder& folder) const { return levelOf(folder) > places_[folder.place].depth; }
    bool followsFolders(const Folder& folder) const {
        return levelOf(folder) < places_[folder.place].linkDepth;
    }

    bool mayListOneMore(const Folder& folder) {
        auto& ofPlace = isFurther(folder) ? budgets_[folder.place].further : budgets_[folder.place].folders;
        auto& ofAll = isFurther(folder) ? all_.further : all_.folders;
        if (ofPlace > 0 && ofAll > 0) return --ofPlace, --ofAll, true;
        if (!isFurther(folder)) uncounted_.insert(places_[folder.place].folder);
        return false;
    }

    void lookThrough(const Folder& folder, std::vector<Folder>& below) {
        if (!*folder.entries) return noteUnreadable(folder);
        listed_.insert(folder.path);
        // A folder may occur again, through a link or because places overlap.
        const auto [known, isNew] = depths_.emplace(folder.realPath, folder.depthLeft);
        if (levelOf(folder) == 0) found_.listed.push_back(folder.path);
        if (!isNew && known->second >= folder.depthLeft) return;
        known->second = folder.depthLeft;

        for (const auto& entry : **folder.entries) {
            if (stop_.stopRequested()) {
                uncounted_.insert(places_[folder.place].folder);
                return;
            }
            const Path item = folder.path / entry.name;
            if (isBundleName(entry.name)) {
                const auto bundle = addBundle(folder, entry, item);
                // A folder may have the name of a bundle and still contain applications.
                if (!bundle || isBundle(BudgetedFiles(files_, budget_), *bundle)) continue;
            }
            if (folder.depthLeft > 0 && !isPrivate(folder, entry.name))
                addFolder(folder, entry, item, below);
            else if (places_[folder.place].isCountedOut)
                noteDeeper(folder, entry, item);
        }
    }

    /// Hidden folders below a home, such as the thousands in which projects keep their past, and its Library,
    /// which has places of its own.
    bool isPrivate(const Folder& folder, const std::string& name) const {
        return places_[folder.place].isHome
               && (name.starts_with('.') || (name == "Library" && levelOf(folder) == 0));
    }

    /// A folder beyond the search's depth may contain applications.
    void noteDeeper(const Folder& folder, const DirectoryEntry& entry, const Path& item) {
        if (entry.kind == FileKind::symbolicLink) {
            const auto real = followLink(folder, item);
            if (!real || depths_.contains(*real)) return;
        }
        uncounted_.insert(places_[folder.place].folder);
    }

    void noteUnreadable(const Folder& folder) {
        if (places_[folder.place].isOptional || isFurther(folder)) return;
        const auto& error = folder.entries->error();
        if (error.fault == FileFault::exhausted)
            uncounted_.insert(places_[folder.place].folder);
        else if (!isAbsence(error))
            found_.unreadable.push_back(folder.path);
        else if (levelOf(folder) == 0)
            noteLinkOnTheWay(folder.path);
    }

    /// A place reached through a link to a missing disk is not absent.
    void noteLinkOnTheWay(const Path& place) {
        for (Path item = place; !item.isRoot(); item = item.parent()) {
            const auto info = files_.info(item);
            if (!info) continue;
            if (info->kind != FileKind::symbolicLink) return;
            if (const auto real = files_.resolve(item); !real && mayLeadAway(real.error()))
                ways_.insert(item);
            return;
        }
    }

    /// An application on a missing disk still owns what is here; one deleted from this disk does not, even if
    /// a link still names it.
    bool mayLeadAway(const FileError& error) {
        if (!isAbsence(error)) return true;
        const auto found = targets_.find(error.path.string());
        if (found == JobProgram::gone) return false;
        if (found != JobProgram::unknown) return true;
        const auto parts = error.path.components();
        const Path top = Path("/") / parts.at(0);
        return !files_.exists(parts.size() > 1 && top == Path("/Users") ? top / parts[1] : top);
    }

    /// Its location without links; nullopt when it is not a folder or exceeds the limit.
    std::optional<Path> addBundle(const Folder& folder, const DirectoryEntry& entry, const Path& item) {
        Path real = folder.realPath / entry.name;
        if (entry.kind == FileKind::symbolicLink) {
            auto followed = followLink(folder, item);
            if (!followed) return std::nullopt;
            real = std::move(*followed);
        } else if (entry.kind != FileKind::directory) {
            return std::nullopt;
        }
        if (found_.names.size() >= maximumBundles && !found_.names.contains(real)) {
            uncounted_.insert(places_[folder.place].folder);
            return std::nullopt;
        }
        found_.names[real].push_back(item);
        return real;
    }

    void addFolder(const Folder& folder, const DirectoryEntry& entry, const Path& item,
                   std::vector<Folder>& below) {
        if (entry.kind == FileKind::directory)
            below.push_back({item, folder.realPath / entry.name, folder.place, folder.depthLeft - 1});
        if (entry.kind != FileKind::symbolicLink || !followsFolders(folder)) return;
        if (auto real = followLink(folder, item))
            below.push_back({item, std::move(*real), folder.place, folder.depthLeft - 1});
    }

    /// The target of the link; nullopt when it is not a folder.
    std::optional<Path> followLink(const Folder& folder, const Path& link) {
        if (linksLeft_ == 0) {
            uncounted_.insert(places_[folder.place].folder);
            return std::nullopt;
        }
        --linksLeft_;
        auto real = files_.resolve(link);
        if (!real && followsFolders(folder) && mayLeadAway(real.error())) found_.unreadable.push_back(link);
        if (!real || !files_.isDirectoryFollowingLinks(*real)) return std::nullopt;
        return std::move(*real);
    }

    const FileSystem& files_;
    const ReadBudget& budget_;
    BundleMemory& memory_;
    const std::vector<BundlePlace>& places_;
    const StopToken& stop_;
    struct Budget {
        int folders = maximumFoldersOfPlace;
        int further = maximumFurtherFoldersOfPlace;
    };
    std::vector<Budget> budgets_; ///< what is left of the budget of each place
    Budget all_ = {maximumFolders, maximumFurtherFolders};
    int linksLeft_ = maximumLinks;
    JobPrograms targets_{files_}; ///< of links
    std::map<Path, int> depths_;  ///< resolved folder → depth to which it was searched
    std::set<Path> listed_;
    std::set<Path> uncounted_;
    std::set<Path> ways_; ///< broken links through which places are reached
    FoundBundles found_;
};

} // namespace

FoundBundles searchBundles(const FileSystem& files, const ReadBudget& budget, BundleMemory& memory,
                           const std::vector<BundlePlace>& places, const StopToken& stop) {
    return BundleSearch(files, budget, memory, places, stop).run();
}

} // namespace tidwen
