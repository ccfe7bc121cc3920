#pragma once

#include "base/path.h"

#include <utility>
#include <vector>

namespace tidwen {

class KnownOwners;

/// Places reached through links, for finding the real location of a find.
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
    std::vector<std::pair<Path, Path>> places_; ///< few; a standard Mac has none
};

/// Whether moving the find, by its path or its real location, would take along something in use.
bool holdsWhatIsInUse(const KnownOwners& owners, const Path& find, const LinkedPlaces& linked);

} // namespace tidwen
