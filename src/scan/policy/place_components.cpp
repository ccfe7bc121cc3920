#include "scan/policy/place_components.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

PlaceComponents placeComponents(const Path& path) {
    PlaceComponents parts = path.standardized().components();
    for (auto& part : parts)
        part = fileNameKey(part);
    return parts;
}

PlaceComponents placeComponents(std::string_view path) {
    return placeComponents(Path(std::string(path)));
}

bool isPlaceWithin(const PlaceComponents& path, const PlaceComponents& folder) {
    return path.size() >= folder.size() && std::equal(folder.begin(), folder.end(), path.begin());
}

} // namespace tidwen
