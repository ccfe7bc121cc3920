#pragma once

#include "base/path.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A place to compare as Mac file systems do: each component as returned by `fileNameKey`.
using PlaceComponents = std::vector<std::string>;

PlaceComponents placeComponents(const Path& path);
PlaceComponents placeComponents(std::string_view path);

/// Whether `path` is `folder` or lies in it.
bool isPlaceWithin(const PlaceComponents& path, const PlaceComponents& folder);

} // namespace tidwen
