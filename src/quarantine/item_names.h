#pragma once

#include "platform/file_system.h"

#include <map>
#include <string>
#include <vector>

namespace tidwen {

/// Finds the items of a run as the disk spells their names now. A document keeps the names that the run gave;
/// a copy through another disk may have decomposed their accents or changed their letter case. Lists each
/// folder once, so it is for one moment only.
class ItemNames {
  public:
    explicit ItemNames(const FileSystem& files) : files_(files) {}

    struct Found {
        Path place; ///< as it was asked for when nothing or more than one thing is called so
        bool isAmbiguous = false;
        bool isThere = false;
    };

    /// `item`, which lies within `root`: by its exact name, else each component as the one entry of its
    /// folder whose name is the same to a Mac's disks.
    Found find(const Path& root, const Path& item);

  private:
    using NamesByKey = std::map<std::string, std::vector<std::string>>;
    const NamesByKey& namesIn(const Path& folder);

    const FileSystem& files_;
    std::map<Path, NamesByKey> known_;
};

} // namespace tidwen
