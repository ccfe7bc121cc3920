#pragma once

#include "base/path.h"
#include "platform/file_system.h"

#include <map>
#include <set>
#include <string>

namespace tidwen {

/// Finds the items of a run under their current names. A document keeps the original names; a copy through
/// another disk may have decomposed their accents or changed their case. Caches each folder's listing, so use
/// it for one moment only.
class ItemNames {
  public:
    explicit ItemNames(const FileSystem& files) : files_(files) {}

    struct Found {
        Path place; ///< as requested when no entry or more than one matches
        bool isAmbiguous = false;
        bool isThere = false;
    };

    /// Finds `item` within `root`: by its exact name, else each component as the only entry of its folder
    /// with a name that a Mac's file systems treat as equal. An item that is only there as a copy that is not
    /// complete, or set aside, has the name that these give it.
    Found find(const Path& root, const Path& item);

  private:
    using NamesByKey = std::map<std::string, std::set<std::string>>;
    struct Names {
        NamesByKey items;
        NamesByKey onTheirWay; ///< of items moved between disks
    };
    const Names& namesIn(const Path& folder);

    const FileSystem& files_;
    std::map<Path, Names> known_;
};

} // namespace tidwen
