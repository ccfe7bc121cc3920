#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"
#include "scan/applications/bundle.h"
#include "scan/applications/owning_bundle.h"
#include "scan/applications/read_trail.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// Caches what a reader returned, each value as long as none of the files it was read from has changed.
/// Bounded: what does not fit is read again each time. Thread-safe.
template<class Value>
class RememberedReads {
  public:
    /// With false everything is read each time, without the cost of trails.
    explicit RememberedReads(bool keepsAny) : keepsAny_(keepsAny) {}

    /// The value for the path: the cached one while it is valid, else what `read` returns for the files and
    /// the trail it is given. `weigh` returns the number of entries of a value; a value without a weight is
    /// not cached, nor one that was read on an exhausted budget.
    template<class Read, class Weigh>
    std::shared_ptr<const Value> read(const Path& path, const FileSystem& files, const ReadBudget& budget,
                                      const Read& read, const Weigh& weigh) {
        if (auto known = find(path); known && known->trail.isUnchanged(files)) return known->value;
        auto fresh = std::make_shared<Remembered>(ReadTrail(keepsAny_));
        const TrailedFiles trailed(files, budget, fresh->trail);
        fresh->value = std::make_shared<const Value>(read(trailed, fresh->trail));
        auto value = fresh->value;
        const bool isKept = keepsAny_ && !trailed.budget().isExhausted();
        const auto entries = isKept ? weigh(*value) : std::nullopt;
        if (entries) {
            fresh->weight = *entries + fresh->trail.size();
            keep(path, std::move(fresh));
        }
        return value;
    }

    void keepOnly(const std::set<Path>& paths) {
        const std::lock_guard lock(mutex_);
        std::erase_if(known_, [&](const auto& each) {
            if (paths.contains(each.first)) return false;
            weight_ -= each.second->weight;
            return true;
        });
    }

  private:
    // Several times what a large Mac needs; some tens of megabytes.
    static constexpr std::size_t mostWeight = 200'000;

    struct Remembered {
        explicit Remembered(ReadTrail none) : trail(std::move(none)) {}

        ReadTrail trail;
        std::shared_ptr<const Value> value;
        std::size_t weight = 0; ///< entries of the value plus states in the trail
    };

    std::shared_ptr<const Remembered> find(const Path& path) const {
        const std::lock_guard lock(mutex_);
        const auto found = known_.find(path);
        return found == known_.end() ? nullptr : found->second;
    }

    void keep(const Path& path, std::shared_ptr<const Remembered> fresh) {
        const std::lock_guard lock(mutex_);
        auto& known = known_[path];
        if (known) weight_ -= known->weight;
        weight_ += fresh->weight;
        known = std::move(fresh);
        if (weight_ <= mostWeight) return;
        weight_ -= known->weight;
        known_.erase(path);
    }

    const bool keepsAny_;
    mutable std::mutex mutex_; ///< guards the members below
    std::map<Path, std::shared_ptr<const Remembered>> known_;
    std::size_t weight_ = 0;
};

/// What a bundle's Info.plist says of it.
struct BundleIdentity {
    bool isThere = false;    ///< a folder, its path valid UTF-8
    bool isReadable = false; ///< its Info.plist exists and could be read
    bool isDamaged = false;  ///< its Info.plist exists and could not be read
    std::string bundleID = {};
    std::optional<std::string> name = {}; ///< for people; absent when empty
    std::vector<std::string> names = {};  ///< CFBundleName, CFBundleDisplayName, executable
    /// Includes the parts of Info.plist that reading its contents needs; absent where they must be read
    /// again.
    std::shared_ptr<const Bundle> opened = {};
};

/// What a look at all bundles caches for the next one.
struct BundleMemory {
    explicit BundleMemory(bool keepsAny)
        : folders(keepsAny), identities(keepsAny), contents(keepsAny), furtherContents(keepsAny) {}

    RememberedReads<FileResult<std::vector<DirectoryEntry>>> folders;
    RememberedReads<BundleIdentity> identities;
    RememberedReads<BundleContents> contents, furtherContents; ///< by reach of the look
};

} // namespace tidwen
