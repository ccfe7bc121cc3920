#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "scan/policy/path_policy.h"

#include <map>
#include <optional>
#include <vector>

namespace tidwen {

/// Resolves the links of many places, looking at each folder once.
class PathPolicy::RealPlaces {
  public:
    explicit RealPlaces(const FileSystem& files) : files_(files) {}

    const FileSystem& files() const { return files_; }

    /// The place as given and, if links lead elsewhere, its real location, existing or not.
    std::vector<Path> spellings(const Path& place);

    /// Counts a link in other homes; false if there were more than are followed.
    bool followsAnotherLink() { return linksLeft_ > 0 && linksLeft_-- > 0; }

  private:
    struct Found {
        std::optional<Path> place; ///< nullopt when it is unknown
        bool isThere = false;
    };

    const Found& find(const Path& place);
    Found look(const Path& place);

    const FileSystem& files_;
    std::map<Path, Found> found_;
    std::size_t linksLeft_ = 2'000;
};

} // namespace tidwen
