#pragma once

#include "base/path.h"

#include <utility>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Places that are reached through links, for telling where a find really lies.
class LinkedPlaces {
  public:
    void add(const Path& place, const Path& real) { places_.emplace_back(place, real); }

    Path resolve(const Path& path) const {
        for (const auto& [place, real] : places_)
            if (path.isWithin(place))
                return Path(real.string() + path.string().substr(place.string().size()));
        return path;
    }

  private:
    std::vector<std::pair<Path, Path>> places_; ///< few: a Mac has none
};

/// Would taking the find away take along what is at work, by the find's name or where it really lies?
bool holdsWhatIsInUse(const KnownOwners& owners, const Path& find, const LinkedPlaces& linked);

} // namespace tidwen
